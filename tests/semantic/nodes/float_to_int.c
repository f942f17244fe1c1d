/* Float to integer conversions (fctiwz, stfiwx or a store through the
 * stack), saturated by the processor out of range. */
#include "harness.h"

struct state {
    float value;
    float scale;
    int truncated;
    short counts;
    unsigned char percent;
};

void step(struct state *s)
{
    s->truncated = (int)s->value;
    s->counts = (short)(int)(s->value * s->scale);
    if (s->value >= 0.0f && s->value < 100.0f)
        s->percent = (unsigned char)(int)s->value;
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_FLOATS(struct state, value, 2));
