/* A two-point controller with hysteresis on short readings and a
 * counter of switchings in a second structure. */
#include "harness.h"

struct log {
    unsigned switches;
    short last_reading;
};

struct state {
    short reading;
    short on_below;
    short off_above;
    _Bool heating;
    struct log *log;
};

void step(struct state *s)
{
    _Bool before = s->heating;
    if (s->reading < s->on_below)
        s->heating = 1;
    else if (s->reading > s->off_above)
        s->heating = 0;
    if (before != s->heating)
        s->log->switches++;
    s->log->last_reading = s->reading;
}

HARNESS_STATE(struct state, struct log, HARNESS_BOOLS(struct state, heating, 1),
              HARNESS_POINTER(struct state, log));
