/* Runs a node's step function on pseudo-random states and prints each state
 * before and after the step, with the stack pointer the step received.
 *
 *     program FIRST_SEED COUNT
 *
 * prints the layout once ("layout STATE SIZE OTHER SIZE", then "member
 * WHICH OFFSET KIND COUNT" lines), then for each seed "input SEED R1",
 * "before STATE-HEX OTHER-HEX" and "after STATE-HEX OTHER-HEX". */
#include "harness.h"

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

struct state;
void step(struct state *a_state);
void call_step(void *a_state);

/* The stack pointer at the step's entry, as its code sees it. */
uint32_t harness_r1;

/* call_step keeps r1 and branches to step, which returns to our caller. */
__asm__(".text\n"
        ".globl call_step\n"
        ".type call_step,@function\n"
        "call_step:\n"
        "\tlis 9,harness_r1@ha\n"
        "\tstw 1,harness_r1@l(9)\n"
        "\tb step\n"
        ".size call_step,.-call_step\n");

static uint32_t m_random;

static uint32_t next_random(void)
{
    m_random ^= m_random << 13;
    m_random ^= m_random >> 17;
    m_random ^= m_random << 5;
    return m_random;
}

static void put32(unsigned char *a_at, uint32_t a_value)
{
    for (int i = 0; i < 4; ++i)
        a_at[i] = (unsigned char)(a_value >> (24 - 8 * i));
}

/* Mostly ordinary numbers, sometimes the special ones. */
static uint32_t float_bits(void)
{
    static const uint32_t specials[] = {
        0x00000000u, 0x80000000u, 0x7f800000u, 0xff800000u, 0x7fc00000u, 0x7fa00001u,
        0x00000001u, 0x807fffffu, 0x7f7fffffu, 0x3f800000u, 0xbf800000u, 0x4f000000u,
    };
    uint32_t choice = next_random() % 16;
    if (choice < sizeof specials / sizeof specials[0] && next_random() % 2 == 0)
        return specials[choice];
    /* Exponents near 1.0 keep most values in the range controllers use. */
    uint32_t bits = next_random();
    if (choice < 12)
        bits = (bits & 0x807fffffu) | ((120u + next_random() % 16) << 23);
    return bits;
}

static void fill(unsigned char *a_bytes, unsigned a_size)
{
    for (unsigned i = 0; i < a_size; ++i)
        a_bytes[i] = (unsigned char)next_random();
}

static void fix_members(void)
{
    const struct harness_layout *layout = &harness_layout;
    for (unsigned m = 0; m < layout->member_count; ++m) {
        const struct harness_member *member = &layout->members[m];
        unsigned char *at = (unsigned char *)(member->in_other ? layout->other : layout->state) + member->offset;
        for (unsigned i = 0; i < member->count; ++i) {
            switch (member->kind) {
            case 'f':
                put32(at + 4 * i, float_bits());
                break;
            case 'd': {
                /* A single's value, or random bits with a modest exponent. */
                uint32_t high = next_random() % 4 ? (next_random() & 0x800fffffu) | ((1016u + next_random() % 16) << 20)
                                                  : float_bits();
                put32(at + 8 * i, high);
                put32(at + 8 * i + 4, next_random() % 2 ? next_random() : 0);
                break;
            }
            case 'b':
                at[i] = next_random() % 2;
                break;
            case 'p':
                put32(at, (uint32_t)(uintptr_t)layout->other);
                break;
            }
        }
    }
}

static void print_bytes(const char *a_label)
{
    const struct harness_layout *layout = &harness_layout;
    printf("%s ", a_label);
    for (unsigned i = 0; i < layout->state_size; ++i)
        printf("%02x", ((unsigned char *)layout->state)[i]);
    printf(" ");
    for (unsigned i = 0; i < layout->other_size; ++i)
        printf("%02x", ((unsigned char *)layout->other)[i]);
    printf("\n");
}

int main(int a_count, char **a_arguments)
{
    if (a_count != 3) {
        fprintf(stderr, "usage: %s FIRST_SEED COUNT\n", a_arguments[0]);
        return 2;
    }
    unsigned long first = strtoul(a_arguments[1], NULL, 10), count = strtoul(a_arguments[2], NULL, 10);
    const struct harness_layout *layout = &harness_layout;
    printf("layout %08x %u %08x %u\n", (unsigned)(uintptr_t)layout->state, layout->state_size,
           (unsigned)(uintptr_t)layout->other, layout->other_size);
    for (unsigned m = 0; m < layout->member_count; ++m)
        printf("member %d %u %c %u\n", layout->members[m].in_other, layout->members[m].offset, layout->members[m].kind,
               layout->members[m].count);
    for (unsigned long seed = first; seed < first + count; ++seed) {
        m_random = (uint32_t)(seed * 2654435761u) | 1u;
        fill(layout->state, layout->state_size);
        fill(layout->other, layout->other_size);
        fix_members();
        print_bytes("before");
        fflush(stdout);
        call_step(layout->state);
        printf("input %lu %08x\n", seed, (unsigned)harness_r1);
        print_bytes("after");
    }
    return 0;
}
