/* A loop over a small array in the structure: sum, maximum and the count
 * of positive elements. */
/* unroll: 7 */
#include "harness.h"

struct state {
    int values[6];
    int sum;
    int max;
    unsigned char positives;
};

void step(struct state *s)
{
    int i;
    s->sum = 0;
    s->max = s->values[0];
    s->positives = 0;
    for (i = 0; i < 6; i++) {
        s->sum += s->values[i] >> 4;
        if (s->values[i] > s->max)
            s->max = s->values[i];
        if (s->values[i] > 0)
            s->positives++;
    }
}

HARNESS_STATE(struct state, struct harness_none);
