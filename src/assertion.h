// The common assertions: side conditions that the expression printer finds
// while it writes the propositions (a strict comparison tied to a non-strict
// one). They are collected only while the driver allows it and are written
// afterwards, one per line, in the UNEQUALITIES section.
#ifndef VELCOR_SRC_ASSERTION_H
#define VELCOR_SRC_ASSERTION_H

#include <vector>

#include "expression.h"

class Assertion {
public:
    // The first trace line of a run: "LAST=" and the count (0 at the start).
    void traceCount() const;

    bool addMore() const { return !no_more; }
    void setMore() { no_more = false; }
    void resetMore() { no_more = true; }
    void addAssertion(const ExpHandle& a_exp);
    void printAll();
    void deleteAssertion(int) {}

    int count() const { return last; }
    const std::vector<ExpHandle>& all() const { return assertions; }
    // Empties the list and switches collecting on.
    void clear();

private:
    std::vector<ExpHandle> assertions;
    bool no_more = false;
    int last = 0;
};

extern Assertion commonAssertions;

#endif
