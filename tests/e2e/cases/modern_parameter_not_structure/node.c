/* The first parameter points to an int behind a typedef. */
typedef int word;

void step(word *w) { w[1] = w[0]; }
