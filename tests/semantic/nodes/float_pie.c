/* Float constants and a table of them in position-independent executable
 * code (-fpie). */
/* cflags: -fpie */
#include "harness.h"

static const float levels[4] = {0.5f, 1.5f, 2.5f, 4.0f};

struct state {
    unsigned char level;
    float demand;
    float limited;
};

void step(struct state *s)
{
    float max = levels[s->level & 3];
    s->limited = s->demand > max ? max : s->demand * 0.75f;
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_FLOATS(struct state, demand, 2));
