/* A switch on a character field, dense enough for a jump table. */
#include "harness.h"

struct state {
    unsigned char command;
    int x;
    int y;
    unsigned errors;
};

void step(struct state *s)
{
    switch (s->command & 15) {
    case 0: s->x++; break;
    case 1: s->x--; break;
    case 2: s->y++; break;
    case 3: s->y--; break;
    case 4: s->x = 0; s->y = 0; break;
    case 5: s->x = s->y; break;
    case 6: s->y = s->x; break;
    case 7: s->x = -s->x; break;
    case 9: s->y <<= 1; break;
    default: s->errors++; break;
    }
}

HARNESS_STATE(struct state, struct harness_none);
