/* Sign operations and magnitude compares on floats: fneg, fabs, fnabs,
 * ordered compares, and a division (fdivs). */
/* cflags: -fno-pie -ffast-math */
#include "harness.h"

struct state {
    float error;
    float magnitude;
    float negated;
    float ratio;
    float divisor;
    _Bool large;
};

void step(struct state *s)
{
    s->magnitude = __builtin_fabsf(s->error);
    s->negated = -s->error;
    s->large = s->magnitude > 10.0f;
    if (s->divisor != 0.0f)
        s->ratio = s->error / s->divisor;
    s->error = -__builtin_fabsf(s->negated);
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_FLOATS(struct state, error, 5),
              HARNESS_BOOLS(struct state, large, 1));
