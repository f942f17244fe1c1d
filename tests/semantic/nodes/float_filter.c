/* A first-order filter in single precision with a constant gain, clamped to
 * a range; compiled as position-independent code. */
/* cflags: -fPIC */
#include "harness.h"

struct state {
    float input;
    float output;
    float low;
    float high;
    _Bool clamped;
};

void step(struct state *s)
{
    float next = s->output + 0.25f * (s->input - s->output);
    s->clamped = 0;
    if (next < s->low) {
        next = s->low;
        s->clamped = 1;
    } else if (next > s->high) {
        next = s->high;
        s->clamped = 1;
    }
    s->output = next;
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_FLOATS(struct state, input, 4),
              HARNESS_BOOLS(struct state, clamped, 1));
