/* A node without parameters maps nothing. */
int counter;

void step(void) { counter++; }
