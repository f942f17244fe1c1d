/* An integrator in double precision: lfd, stfd, fmr, fadd, fmul and a
 * constant step from the read-only data (not position-independent). */
#include "harness.h"

struct state {
    double position;
    double velocity;
    double acceleration;
    double previous;
};

void step(struct state *s)
{
    double dt = 0.01;
    s->previous = s->position;
    s->velocity = s->velocity + s->acceleration * dt;
    s->position = s->position + s->velocity * dt;
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_DOUBLES(struct state, position, 4));
