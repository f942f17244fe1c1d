/* Arrays walked by pointer, which gcc turns into loads and stores with
 * update (lhzu, sthu, stbu, lwzu) in its loops. */
/* unroll: 7 */
#include "harness.h"

struct state {
    unsigned short in[6];
    unsigned short out[6];
    unsigned char marks[6];
    int total;
};

void step(struct state *s)
{
    const unsigned short *p = s->in;
    unsigned short *q = s->out;
    unsigned char *m = s->marks;
    int i, total = 0;
    for (i = 0; i < 6; i++) {
        unsigned short v = *p++;
        total += v;
        *q++ = (unsigned short)(v >> 1);
        *m++ = (unsigned char)(v & 1);
    }
    s->total = total;
}

HARNESS_STATE(struct state, struct harness_none);
