/* A loop that may leave early: find the first element above a limit
 * (bdz and bdnz with a condition: bc 18 and friends at -O2). */
/* unroll: 7 */
#include "harness.h"

struct state {
    short values[6];
    short limit;
    signed char found;
    _Bool any;
};

void step(struct state *s)
{
    int i;
    s->found = -1;
    for (i = 0; i < 6; i++) {
        if (s->values[i] > s->limit) {
            s->found = (signed char)i;
            break;
        }
    }
    s->any = s->found >= 0;
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_BOOLS(struct state, any, 1));
