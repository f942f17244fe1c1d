/* Flags and small counters in bit-fields, read and written in place
 * (rlwinm, rlwimi). */
#include "harness.h"

struct flags {
    unsigned enabled : 1;
    unsigned mode : 3;
    unsigned count : 5;
    unsigned error : 1;
    unsigned level : 12;
    unsigned spare : 10;
};

struct state {
    struct flags f;
    int input;
    _Bool changed;
};

void step(struct state *s)
{
    unsigned old = s->f.mode;
    if (s->f.enabled) {
        s->f.count = s->f.count + 1;
        s->f.mode = (unsigned)s->input & 7;
    }
    s->f.error = s->input < 0;
    s->f.level = (s->f.level + (unsigned)s->input) & 0xfff;
    s->changed = old != s->f.mode;
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_BOOLS(struct state, changed, 1));
