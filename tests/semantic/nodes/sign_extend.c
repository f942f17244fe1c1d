/* Signed chars and shorts widened, combined and narrowed again (extsb,
 * extsh, byte and halfword loads and stores). */
#include "harness.h"

struct state {
    signed char a;
    signed char b;
    short c;
    short d;
    int wide;
    short narrow;
    signed char low;
};

void step(struct state *s)
{
    int sum = s->a + s->b;
    s->wide = sum * s->c + s->d;
    s->narrow = (short)(s->wide >> 3);
    s->low = (signed char)(s->narrow + s->a);
    if (s->low < 0)
        s->c = (short)-s->c;
}

HARNESS_STATE(struct state, struct harness_none);
