/* Signed division and remainder by a state value, guarded against the
 * cases the processor leaves undefined. */
#include "harness.h"

struct state {
    int numerator;
    short denominator;
    int quotient;
    int remainder;
    long long product;
};

void step(struct state *s)
{
    int d = s->denominator;
    if (d != 0 && !(d == -1 && s->numerator == (-2147483647 - 1))) {
        s->quotient = s->numerator / d;
        s->remainder = s->numerator % d;
    }
    s->product = (long long)s->numerator * d;
}

HARNESS_STATE(struct state, struct harness_none);
