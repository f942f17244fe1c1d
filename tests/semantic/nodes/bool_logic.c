/* Interlocks computed from _Bool inputs into _Bool outputs. */
#include "harness.h"

struct inputs {
    _Bool door_closed;
    _Bool emergency;
    _Bool request;
    _Bool sensor[3];
};

struct state {
    struct inputs in;
    _Bool run;
    _Bool alarm;
    _Bool majority;
    unsigned char votes;
};

void step(struct state *s)
{
    s->votes = (unsigned char)(s->in.sensor[0] + s->in.sensor[1] + s->in.sensor[2]);
    s->majority = s->votes >= 2;
    s->run = s->in.door_closed && !s->in.emergency && (s->in.request || s->run);
    s->alarm = s->in.emergency || (s->majority && !s->in.door_closed);
}

HARNESS_STATE(struct state, struct harness_none, HARNESS_BOOLS(struct state, in.door_closed, 6),
              HARNESS_BOOLS(struct state, run, 3));
