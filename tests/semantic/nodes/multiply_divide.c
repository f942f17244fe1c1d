/* Division by constants (mulhw, mulhwu) and by a state value guarded
 * against zero (divw, divwu); the high word of a product. */
#include "harness.h"

struct state {
    int signed_value;
    unsigned unsigned_value;
    unsigned divisor;
    int by_seven;
    unsigned by_ten;
    unsigned quotient;
    unsigned remainder;
    unsigned high;
};

void step(struct state *s)
{
    s->by_seven = s->signed_value / 7;
    s->by_ten = s->unsigned_value / 10u;
    if (s->divisor != 0) {
        s->quotient = s->unsigned_value / s->divisor;
        s->remainder = s->unsigned_value % s->divisor;
    }
    s->high = (unsigned)(((unsigned long long)s->unsigned_value * s->divisor) >> 32);
}

HARNESS_STATE(struct state, struct harness_none);
