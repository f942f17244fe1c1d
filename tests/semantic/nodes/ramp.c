/* A setpoint ramp limited by a rate, in integers, with the direction
 * kept as a signed char. */
#include "harness.h"

struct state {
    int target;
    int current;
    unsigned short rate;
    signed char direction;
    _Bool reached;
};

void step(struct state *s)
{
    int diff = s->target - s->current;
    int rate = s->rate;
    if (diff > rate) {
        s->current += rate;
        s->direction = 1;
    } else if (diff < -rate) {
        s->current -= rate;
        s->direction = -1;
    } else {
        s->current = s->target;
        s->direction = 0;
    }
    s->reached = s->current == s->target;
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_BOOLS(struct state, reached, 1));
