/* Guards that return at once (conditional returns: bclr with a
 * condition at -O2). */
#include "harness.h"

struct state {
    _Bool enabled;
    _Bool frozen;
    int value;
    int limit;
    unsigned updates;
};

void step(struct state *s)
{
    if (!s->enabled)
        return;
    if (s->frozen)
        return;
    s->updates++;
    if (s->value >= s->limit)
        return;
    s->value += 2;
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_BOOLS(struct state, enabled, 2));
