/* Results tested against zero right after they are computed, which gcc
 * folds into record forms (and., or., xor., andis., srawi., rlwinm.). */
#include "harness.h"

struct state {
    unsigned a;
    unsigned b;
    int c;
    unsigned events;
};

void step(struct state *s)
{
    unsigned both = s->a & s->b;
    if (both == 0)
        s->events |= 1;
    if ((s->a & 0x00300000u) != 0)
        s->events |= 2;
    if ((s->a ^ s->b) == 0)
        s->events |= 4;
    int quarter = s->c >> 2;
    if (quarter < 0)
        s->events |= 8;
    if ((s->b | s->a) == 0)
        s->events = 0;
    s->c = quarter;
    s->a = both;
}

HARNESS_STATE(struct state, struct harness_none);
