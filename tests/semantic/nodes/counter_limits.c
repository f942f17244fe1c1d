/* A counter kept between limits of a nested structure, with a flag set when
 * it wraps and a second structure that counts the wraps. */
#include "harness.h"

struct limits {
    int low;
    int high;
};

struct stats {
    unsigned wraps;
    short last;
};

struct state {
    int count;
    struct limits bounds;
    _Bool wrapped;
    struct stats *stats;
};

void step(struct state *s)
{
    s->wrapped = 0;
    if (s->count >= s->bounds.high) {
        s->count = s->bounds.low;
        s->wrapped = 1;
        s->stats->wraps = s->stats->wraps + 1;
        s->stats->last = (short)s->bounds.high;
    } else {
        s->count = s->count + 1;
    }
}

HARNESS_STATE(struct state, struct stats, HARNESS_BOOLS(struct state, wrapped, 1), HARNESS_POINTER(struct state, stats));
