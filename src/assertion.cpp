#include "assertion.h"

#include <iostream>

#include "common.h"
#include "misc/trace.h"
#include "misc/writer.h"
#include "parse.h"
#include "symbols.h"

void Assertion::traceCount() const
{
    misc::traceOut() << "LAST=" << last << '\n';
}

void Assertion::addAssertion(const ExpHandle& a_exp)
{
    if (no_more || !a_exp.data())
        return;
    assertions.push_back(a_exp);
    ++last;
}

void Assertion::printAll()
{
    // Printing an assertion prints comparisons, which must not add more.
    no_more = true;
    misc::traceOut() << "=*=*=*=*=*=*=*=*=*= print all " << last << '\n';
    misc::Writer out(*getOutFile());
    system_t side = parse_symbol_table ? parse_symbol_table->getSystem() : TARGET;
    for (int i = 0; i < last; ++i) {
        misc::traceOut() << "inserts " << i << '\n';
        out << assertStr();
        assertions[i]->print(false, side, false);
        out << endStr() << '\n';
    }
}

void Assertion::clear()
{
    assertions.clear();
    no_more = false;
    last = 0;
}
