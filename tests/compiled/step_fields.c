/* A step function over a state of many kinds of members: int, short, char,
 * _Bool and unsigned fields, a float, a nested structure and a pointer to a
 * second structure; compares and branches, a switch, a small loop and a
 * call. step_fields.dwarf states the same structure in DWARF 1. */

struct limits {
    int low;
    int high;
};

struct counter {
    int count;
    unsigned hits;
};

typedef struct state {
    int mode;
    short delta;
    char tag;
    _Bool enabled;
    unsigned ticks;
    float gain;
    struct limits bounds;
    struct counter *counter;
    int level;
} state_t;

static __attribute__((noinline)) int clamp(int value, int low, int high)
{
    if (value < low)
        return low;
    return value > high ? high : value;
}

void step(state_t *s)
{
    int i;

    if (!s->enabled)
        return;
    s->ticks = s->ticks + 1;
    switch (s->mode) {
    case 0:
        s->level += s->delta;
        break;
    case 1:
        s->level -= s->delta;
        break;
    case 2:
        s->level = -s->level;
        break;
    case 3:
        s->level = s->tag;
        break;
    case 4:
        s->level = s->level * 3;
        break;
    default:
        s->mode = 0;
        break;
    }
    for (i = 0; i < 3; i++)
        if (s->level > s->bounds.high)
            s->level -= s->delta;
    s->level = clamp(s->level, s->bounds.low, s->bounds.high);
    if (s->gain > 1.5f)
        s->counter->hits++;
    s->counter->count = s->level;
}

int main(void)
{
    static struct counter counter;
    static state_t state = {4, 2, 7, 1, 0, 2.0f, {-10, 10}, &counter, 3};

    step(&state);
    return counter.count == 9 && counter.hits == 1 ? 0 : 1;
}
