/* A mode machine whose switch gcc turns into a jump table from -O1 on. */
#include "harness.h"

struct output {
    int command;
    unsigned short code;
};

struct state {
    unsigned mode;
    int setpoint;
    int measured;
    struct output *out;
};

void step(struct state *s)
{
    switch (s->mode & 7) {
    case 0:
        s->out->command = 0;
        break;
    case 1:
        s->out->command = s->setpoint - s->measured;
        break;
    case 2:
        s->out->command = (s->setpoint - s->measured) * 3;
        break;
    case 3:
        s->out->command = -s->measured;
        s->mode = 0;
        break;
    case 4:
        s->out->command = s->setpoint;
        s->out->code = 7;
        break;
    case 5:
        s->out->code = (unsigned short)s->measured;
        break;
    default:
        s->mode = s->mode & 3;
        break;
    }
    s->out->code = (unsigned short)(s->out->code + 1);
}

HARNESS_STATE(struct state, struct output, HARNESS_POINTER(struct state, out));
