/* Halfword arrays indexed by state values (lhax, lhzx, sthx). */
#include "harness.h"

struct state {
    short table[8];
    unsigned short gains[4];
    unsigned index;
    unsigned which;
    int value;
    unsigned scaled;
};

void step(struct state *s)
{
    unsigned i = s->index & 7;
    unsigned g = s->which & 3;
    s->value = s->table[i];
    s->scaled = (unsigned)s->gains[g] * 3u;
    s->table[(i + 1) & 7] = (short)(s->value + 1);
    s->gains[g] = (unsigned short)(s->gains[g] >> 1);
}

HARNESS_STATE(struct state, struct harness_none);
