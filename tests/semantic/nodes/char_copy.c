/* Byte arrays copied and filtered in loops (lbz, stb and their update
 * forms, CTR loops at -O2). */
/* unroll: 9 */
#include "harness.h"

struct state {
    unsigned char in[8];
    unsigned char out[8];
    unsigned char threshold;
    unsigned char above;
};

void step(struct state *s)
{
    int i;
    s->above = 0;
    for (i = 0; i < 8; i++) {
        unsigned char c = s->in[i];
        if (c > s->threshold) {
            s->out[i] = (unsigned char)(c - s->threshold);
            s->above++;
        } else {
            s->out[i] = 0;
        }
    }
}

HARNESS_STATE(struct state, struct harness_none);
