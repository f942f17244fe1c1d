/* Members of every fundamental type that DWARF 1 names, a pointer to int,
 * an int behind a typedef and a const int. */
typedef int counter_t;

typedef struct mix {
    char c;
    unsigned char uc;
    short s;
    unsigned short us;
    int i;
    unsigned u;
    long l;
    float f;
    double d;
    int *ip;
    counter_t n;
    const int k;
} mix_t;

void step(mix_t *m)
{
    m->i = m->n + m->k;
    m->u = *m->ip;
    m->l = m->l + 1;
}
