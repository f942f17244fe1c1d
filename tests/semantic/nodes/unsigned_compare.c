/* Unsigned and signed compares of the same bits, on every width. */
#include "harness.h"

struct state {
    unsigned a;
    int b;
    unsigned short c;
    short d;
    unsigned char e;
    signed char f;
    unsigned char result;
};

void step(struct state *s)
{
    unsigned char r = 0;
    if (s->a > (unsigned)s->b)
        r |= 1;
    if (s->b > (int)s->a)
        r |= 2;
    if (s->c > (unsigned short)s->d)
        r |= 4;
    if (s->d > (short)s->c)
        r |= 8;
    if (s->e > (unsigned char)s->f)
        r |= 16;
    if (s->f > (signed char)s->e)
        r |= 32;
    if (s->a >= 1000u)
        r |= 64;
    s->result = r;
}

HARNESS_STATE(struct state, struct harness_none);
