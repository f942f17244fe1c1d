/* A step function whose code from -O1 on returns through a shared tail: the
 * else part, placed after the return, goes back to the store that both
 * paths end with. step_tail.dwarf states the same structure in DWARF 1. */

typedef struct tail_state {
    int input;
    int output;
    unsigned count;
    int flag;
} tail_state_t;

void step(tail_state_t *s)
{
    if (s->input > 10)
        s->output = s->input - 10;
    else
        s->count = s->count / 3;
    s->flag = s->output + 1;
}

int main(void)
{
    static tail_state_t state = {4, 5, 9, 0};

    step(&state);
    return state.count == 3 && state.flag == 6 ? 0 : 1;
}
