/* A checksum over words of a nested structure with constant keys: xor,
 * xori and xoris. */
#include "harness.h"

struct words {
    unsigned w[4];
};

struct state {
    struct words data;
    unsigned key;
    unsigned sum;
    unsigned char parity;
};

void step(struct state *s)
{
    unsigned sum = s->key ^ 0x5a;
    sum ^= s->data.w[0] ^ 0x12340000u;
    sum ^= s->data.w[1] ^ 0x0000beefu;
    sum ^= s->data.w[2] ^ 0xdead0000u;
    sum ^= s->data.w[3];
    s->sum = sum;
    s->parity = (unsigned char)((sum ^ (sum >> 16) ^ (sum >> 8)) & 1);
}

HARNESS_STATE(struct state, struct harness_none);
