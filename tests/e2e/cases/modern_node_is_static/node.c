/* The node is not external: it is not the node velcor looks for. */
typedef struct state { int a; int b; } state_t;

static void step(state_t *s) { s->b = s->a; }

void (*keep)(state_t *) = step;
