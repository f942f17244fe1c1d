/* A ring buffer of words in the second structure: a new sample in, the
 * oldest out, a running sum (indexed loads and stores). */
#include "harness.h"

struct ring {
    int samples[8];
    unsigned head;
};

struct state {
    int input;
    int sum;
    int oldest;
    struct ring *ring;
};

void step(struct state *s)
{
    struct ring *r = s->ring;
    unsigned head = r->head & 7;
    s->oldest = r->samples[head];
    s->sum = s->sum - s->oldest + s->input;
    r->samples[head] = s->input;
    r->head = (head + 1) & 7;
}

HARNESS_STATE(struct state, struct ring, HARNESS_POINTER(struct state, ring));
