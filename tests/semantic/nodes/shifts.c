/* Shifts by constants and by amounts from the state: srawi, sraw, slw,
 * srw, rlwinm. */
#include "harness.h"

struct state {
    int value;
    unsigned bits;
    unsigned char amount;
    int arithmetic;
    unsigned logical;
    unsigned left;
    int quarter;
};

void step(struct state *s)
{
    unsigned n = s->amount & 31;
    s->arithmetic = s->value >> n;
    s->logical = s->bits >> n;
    s->left = s->bits << n;
    s->quarter = s->value / 4;
    s->bits = (s->bits >> 5) | (s->bits << 27);
}

HARNESS_STATE(struct state, struct harness_none);
