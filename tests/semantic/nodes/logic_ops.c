/* Every two-operand logic form: nor, nand, eqv, orc, andc, with or and
 * and. */
#include "harness.h"

struct state {
    unsigned a;
    unsigned b;
    unsigned nor_ab;
    unsigned nand_ab;
    unsigned eqv_ab;
    unsigned orc_ab;
    unsigned andc_ab;
    unsigned not_a;
};

void step(struct state *s)
{
    unsigned a = s->a, b = s->b;
    s->nor_ab = ~(a | b);
    s->nand_ab = ~(a & b);
    s->eqv_ab = ~(a ^ b);
    s->orc_ab = a | ~b;
    s->andc_ab = a & ~b;
    s->not_a = ~a;
}

HARNESS_STATE(struct state, struct harness_none);
