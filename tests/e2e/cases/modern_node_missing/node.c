typedef struct state { int a; int b; } state_t;

void step(state_t *s) { s->b = s->a; }
