/* Integer to float conversions: the magic-number form through the stack
 * (xoris, lfd, fsub) and the result rounded to single (frsp). */
#include "harness.h"

struct state {
    int raw;
    unsigned short sensor;
    float gain;
    float converted;
    float scaled;
    double precise;
};

void step(struct state *s)
{
    s->converted = (float)s->raw;
    s->scaled = (float)s->sensor * s->gain;
    s->precise = (double)s->raw * 0.5;
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_FLOATS(struct state, gain, 3),
              HARNESS_DOUBLES(struct state, precise, 1));
