/* What a step function's file tells the harness: where its structure and
 * the second structure it points to live, and which members must hold
 * valid values (floats, _Bool, the pointer) rather than random bytes.
 *
 * A node file defines its types and `void step(struct S *s)`, then
 *
 *     HARNESS_STATE(struct S, struct T,
 *                   HARNESS_POINTER(struct S, other),
 *                   HARNESS_FLOATS(struct S, gain, 1), HARNESS_BOOLS(struct T, on, 2));
 *
 * (struct harness_none when there is no second structure). The harness is
 * another translation unit, so the node's code stays its own. */
#ifndef HARNESS_H
#define HARNESS_H

#include <stddef.h>

struct harness_none {
    int unused;
};

struct harness_member {
    int in_other; /* 0: the node's structure, 1: the second one */
    unsigned offset;
    char kind; /* 'f' float, 'd' double, 'b' _Bool, 'p' pointer to the second structure */
    unsigned count;
};

struct harness_layout {
    void *state;
    unsigned state_size;
    void *other;
    unsigned other_size;
    const struct harness_member *members;
    unsigned member_count;
};

#define HARNESS_IN(TYPE, MEMBER) (__builtin_types_compatible_p(TYPE, harness_other_t)), offsetof(TYPE, MEMBER)
#define HARNESS_POINTER(TYPE, MEMBER) {HARNESS_IN(TYPE, MEMBER), 'p', 1}
#define HARNESS_FLOATS(TYPE, MEMBER, COUNT) {HARNESS_IN(TYPE, MEMBER), 'f', COUNT}
#define HARNESS_DOUBLES(TYPE, MEMBER, COUNT) {HARNESS_IN(TYPE, MEMBER), 'd', COUNT}
#define HARNESS_BOOLS(TYPE, MEMBER, COUNT) {HARNESS_IN(TYPE, MEMBER), 'b', COUNT}

#define HARNESS_STATE(STATE_TYPE, OTHER_TYPE, ...)                                                    \
    typedef OTHER_TYPE harness_other_t;                                                               \
    static STATE_TYPE harness_state;                                                                  \
    static OTHER_TYPE harness_other;                                                                  \
    static const struct harness_member harness_members[] = {{0, 0, 0, 0}, __VA_ARGS__};              \
    const struct harness_layout harness_layout = {                                                    \
        &harness_state, sizeof harness_state, &harness_other, sizeof harness_other, harness_members + 1, \
        sizeof harness_members / sizeof harness_members[0] - 1}

extern const struct harness_layout harness_layout;

#endif
