/* 64-bit counters in 32-bit code: carries through addc/adde, borrows
 * through subfc/subfe, addze and neg. */
#include "harness.h"

struct state {
    long long total;
    unsigned long long ticks;
    long long delta;
    unsigned step_size;
    long long negated;
};

void step(struct state *s)
{
    s->ticks += s->step_size;
    s->total += s->delta;
    s->negated = -s->total;
    if (s->ticks > 0xffffffffull)
        s->delta -= 3;
}

HARNESS_STATE(struct state, struct harness_none);
