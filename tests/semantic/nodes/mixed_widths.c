/* Members of every integer width, signed and unsigned, combined with
 * arithmetic and compares. */
#include "harness.h"

struct state {
    signed char gain;
    unsigned char level;
    short offset;
    unsigned short limit;
    int total;
    unsigned mask;
    _Bool saturated;
};

void step(struct state *s)
{
    int value = s->total + s->gain * s->offset;
    s->saturated = value > s->limit;
    if (s->saturated)
        value = s->limit;
    s->total = value;
    s->level = (unsigned char)(s->level + s->gain);
    s->mask = (s->mask ^ (unsigned)value) | s->level;
    s->offset = (short)(s->offset - s->gain);
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_BOOLS(struct state, saturated, 1));
