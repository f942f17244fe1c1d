/* The PID controller's arithmetic compiled as position-independent code:
 * constants reached through bcl 20,31 and the global offset table. */
/* cflags: -fPIC */
#include "harness.h"

struct state {
    float setpoint;
    float measured;
    float integral;
    float output;
    float kp;
};

void step(struct state *s)
{
    float error = s->setpoint - s->measured;
    s->integral = s->integral + error * 0.05f;
    s->output = s->kp * error + 0.5f * s->integral + 3.0f;
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_FLOATS(struct state, setpoint, 5));
