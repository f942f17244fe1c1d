/* Ints, structures held by value (through a typedef and directly) and
 * pointers to structures (through a typedef and directly). */
typedef struct range {
    int low;
    int high;
} range_t;

struct point {
    int x;
    int y;
};

typedef struct sensor {
    int value;
    struct point where;
} sensor_t;

typedef struct state {
    int count;
    range_t bounds;
    sensor_t *primary;
    struct point origin;
    struct sensor *backup;
    int flags;
} state_t;

void step(state_t *s)
{
    if (s->count > s->bounds.high)
        s->count = s->bounds.low;
    else
        s->count++;
    s->primary->value = s->origin.x + s->backup->where.y;
    s->flags = s->primary->where.x;
}
