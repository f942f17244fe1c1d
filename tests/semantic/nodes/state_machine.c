/* A controller's state machine on an enumeration, compiled into a jump
 * table (bcctr) from -O1 on, with actions on a second structure. */
#include "harness.h"

enum phase { IDLE, STARTING, RUNNING, STOPPING, FAULT, RESET, WAIT, DONE };

struct actuator {
    int position;
    _Bool moving;
    unsigned char alarms;
};

struct state {
    enum phase phase;
    unsigned ticks;
    int target;
    struct actuator *act;
};

void step(struct state *s)
{
    struct actuator *a = s->act;
    switch ((enum phase)(s->phase & 7)) {
    case IDLE:
        a->moving = 0;
        if (s->target != a->position)
            s->phase = STARTING;
        break;
    case STARTING:
        a->moving = 1;
        s->phase = RUNNING;
        break;
    case RUNNING:
        a->position += a->position < s->target ? 1 : -1;
        if (a->position == s->target)
            s->phase = STOPPING;
        break;
    case STOPPING:
        a->moving = 0;
        s->phase = IDLE;
        break;
    case FAULT:
        a->alarms++;
        s->phase = RESET;
        break;
    case RESET:
        a->position = 0;
        s->phase = WAIT;
        break;
    case WAIT:
        if (++s->ticks > 3)
            s->phase = DONE;
        break;
    default:
        s->ticks = 0;
        break;
    }
}

HARNESS_STATE(struct state, struct actuator, HARNESS_POINTER(struct state, act),
              HARNESS_BOOLS(struct actuator, moving, 1));
