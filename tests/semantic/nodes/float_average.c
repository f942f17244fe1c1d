/* A float average over a small array with a loop, its minimum and
 * maximum (lfsx, fcmpu, fdivs), position-independent. */
/* cflags: -fPIC */
/* unroll: 5 */
#include "harness.h"

struct state {
    float samples[4];
    float mean;
    float low;
    float high;
};

void step(struct state *s)
{
    int i;
    float sum = 0.0f;
    s->low = s->samples[0];
    s->high = s->samples[0];
    for (i = 0; i < 4; i++) {
        float v = s->samples[i];
        sum += v;
        if (v < s->low)
            s->low = v;
        if (v > s->high)
            s->high = v;
    }
    s->mean = sum / 4.0f;
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_FLOATS(struct state, samples, 7));
