/* Nested structures two levels deep and a pointer to a second structure
 * holding its own nested member. */
#include "harness.h"

struct point {
    short x;
    short y;
};

struct box {
    struct point low;
    struct point high;
};

struct target {
    struct point where;
    unsigned char hits;
};

struct state {
    struct box area;
    struct point cursor;
    struct target *target;
    _Bool inside;
};

void step(struct state *s)
{
    struct point c = s->cursor;
    s->inside = c.x >= s->area.low.x && c.x <= s->area.high.x && c.y >= s->area.low.y && c.y <= s->area.high.y;
    if (s->inside && c.x == s->target->where.x && c.y == s->target->where.y)
        s->target->hits++;
    s->cursor.x = (short)(c.x + 1);
}

HARNESS_STATE(struct state, struct target, HARNESS_POINTER(struct state, target),
              HARNESS_BOOLS(struct state, inside, 1));
