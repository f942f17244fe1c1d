/* The node of the bundled example: one step of a counter that wraps from
 * the upper bound of its range back to the lower one. The listing
 * counter.s is its compiled code, counter.dwarf the debugging entries of
 * its executable. */

typedef struct range {
    int low;
    int high;
} range_t;

typedef struct counter_state {
    int count;
    range_t bounds;
    int wrapped;
} counter_t;

void counter_step(counter_t *state)
{
    int next = state->count + 1;

    if (next > state->bounds.high) {
        next = state->bounds.low;
        state->wrapped = 1;
    }
    state->count = next;
}
