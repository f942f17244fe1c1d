/* Flags tested by masks in the low and high halfword (andi., andis.) and
 * results kept as _Bool. */
#include "harness.h"

struct state {
    unsigned status;
    unsigned command;
    _Bool ready;
    _Bool fault;
    _Bool high;
    int counter;
};

void step(struct state *s)
{
    s->ready = (s->status & 0x10) != 0;
    s->fault = (s->status & 0x00020000u) != 0;
    s->high = (s->command & 0xff000000u) == 0x12000000u;
    if (s->status & 0x8000)
        s->counter++;
    if ((s->command & 0x0c) == 0x04)
        s->counter -= 2;
    if (s->fault && !s->ready)
        s->command &= 0xffff00ffu;
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_BOOLS(struct state, ready, 3));
