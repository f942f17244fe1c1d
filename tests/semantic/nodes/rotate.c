/* Rotations by a variable amount (rlwnm) and by constants, and a field
 * inserted into a word (rlwimi). */
#include "harness.h"

struct state {
    unsigned word;
    unsigned char amount;
    unsigned rotated;
    unsigned inserted;
    unsigned short field;
};

void step(struct state *s)
{
    unsigned n = s->amount & 31;
    s->rotated = (s->word << n) | (s->word >> ((32 - n) & 31));
    s->inserted = (s->inserted & ~0x0000ff00u) | (((unsigned)s->field << 8) & 0x0000ff00u);
    s->word = (s->word << 8) | (s->word >> 24);
}

HARNESS_STATE(struct state, struct harness_none);
