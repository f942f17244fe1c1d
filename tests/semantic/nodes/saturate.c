/* Saturating signed and unsigned additions, as controllers clamp their
 * outputs. */
#include "harness.h"

struct state {
    int a;
    int b;
    unsigned u;
    unsigned v;
    int sum;
    unsigned usum;
    unsigned char overflowed;
};

void step(struct state *s)
{
    long long wide = (long long)s->a + s->b;
    s->overflowed = 0;
    if (wide > 2147483647LL) {
        s->sum = 2147483647;
        s->overflowed = 1;
    } else if (wide < -2147483647LL - 1) {
        s->sum = -2147483647 - 1;
        s->overflowed = 2;
    } else {
        s->sum = (int)wide;
    }
    s->usum = s->u + s->v < s->u ? 0xffffffffu : s->u + s->v;
}

HARNESS_STATE(struct state, struct harness_none);
