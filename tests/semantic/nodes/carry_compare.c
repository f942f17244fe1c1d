/* Comparisons turned into values without branches: gcc uses the carry
 * (addic, subfic, subfe, addze, neg) for these at -O1 and above. */
#include "harness.h"

struct state {
    int a;
    int b;
    unsigned u;
    unsigned v;
    int nonzero;
    int is_zero;
    int below;
    int signs;
    unsigned below_31;
};

void step(struct state *s)
{
    s->nonzero = s->a != 0;
    s->is_zero = s->b == 0;
    s->below = s->u < s->v;
    s->signs = (s->a < 0) + (s->b >= 0);
    s->below_31 = s->u <= 31u ? 31u - s->u : 0u;
}

HARNESS_STATE(struct state, struct harness_none);
