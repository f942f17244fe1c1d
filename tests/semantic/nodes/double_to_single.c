/* Double values rounded to single (frsp) and a float average with a
 * division by a constant (fdivs or a multiplication). */
#include "harness.h"

struct state {
    double a;
    double b;
    float rounded;
    float average;
    float copy;
};

void step(struct state *s)
{
    s->rounded = (float)(s->a - s->b);
    s->average = (float)s->a / 3.0f;
    s->copy = s->rounded;
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_DOUBLES(struct state, a, 2),
              HARNESS_FLOATS(struct state, rounded, 3));
