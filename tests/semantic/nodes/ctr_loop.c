/* Loops with a known count, which gcc runs on the count register (mtctr
 * and bdnz: bc 16) from -O1 on. */
/* unroll: 6 */
#include "harness.h"

struct state {
    int history[5];
    int weights[5];
    int output;
    unsigned decay;
};

void step(struct state *s)
{
    int i, acc = 0;
    for (i = 0; i < 5; i++)
        acc += s->history[i] * s->weights[i];
    for (i = 4; i > 0; i--)
        s->history[i] = s->history[i - 1];
    s->history[0] = acc >> 8;
    s->output = acc;
    s->decay = s->decay >> 1;
}

HARNESS_STATE(struct state, struct harness_none);
