/* A PID controller in single precision with gains in the state and
 * constants in the code: fmadds, fmsubs, fsubs, fmuls, compares. */
#include "harness.h"

struct gains {
    float kp;
    float ki;
    float kd;
};

struct state {
    float setpoint;
    float measured;
    float integral;
    float previous_error;
    float output;
    struct gains *gains;
    _Bool saturated;
};

void step(struct state *s)
{
    const struct gains *g = s->gains;
    float error = s->setpoint - s->measured;
    float derivative = error - s->previous_error;
    s->integral = s->integral + error * 0.1f;
    float out = g->kp * error + g->ki * s->integral + g->kd * derivative;
    s->saturated = 0;
    if (out > 100.0f) {
        out = 100.0f;
        s->saturated = 1;
    } else if (out < -100.0f) {
        out = -100.0f;
        s->saturated = 1;
    }
    s->output = out;
    s->previous_error = error;
}

HARNESS_STATE(struct state, struct gains, HARNESS_FLOATS(struct state, setpoint, 5),
              HARNESS_POINTER(struct state, gains), HARNESS_BOOLS(struct state, saturated, 1),
              HARNESS_FLOATS(struct gains, kp, 3));
