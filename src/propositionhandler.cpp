// The registry of branch propositions.
#include "propositionhandler.h"

#include <string>

#include "misc/stop.h"
#include "misc/writer.h"
#include "parse.h"

propositionHandler::propositionHandler(int a_size)
    : m_propositions(a_size > 0 ? a_size : 0), m_expressions(a_size > 0 ? a_size : 0), m_size(a_size)
{
    VELCOR_ASSERT(a_size >= 1);
    // Proposition 0 is the constant true.
    m_propositions[0] = new ConstExp(1);
}

void propositionHandler::clear()
{
    for (int id = 1; id <= m_next_index; ++id) {
        m_propositions[id] = nullptr;
        m_expressions[id] = nullptr;
    }
    m_propositions[0] = new ConstExp(1);
    m_next_index = 0;
}

int propositionHandler::setNextProposition(const ExpHandle& a_exp)
{
    VELCOR_ASSERT(!a_exp.isNull());
    misc::Writer out(*getOutFile());
    out << "PPPPPPPPPPPPPP proposition index = " << m_next_index;
    a_exp->print(true, TARGET, true);
    out << "PPPPPPPPPPPPPP " << '\n';

    // The last number that fits is m_size - 1.
    if (m_next_index + 1 >= m_size)
        stopCapacity("more than " + std::to_string(m_size - 1) + " propositions (m_next_index < m_size)");

    ++m_next_index;
    const int id = m_next_index;
    const std::string name = "p" + std::to_string(id);
    VELCOR_ASSERT(parse_symbol_table != nullptr);
    TN* variable = parse_symbol_table->addTN(new TN(TN_LOG_REG, name.c_str()));
    m_propositions[id] = new VarExp(variable);
    m_expressions[id] = a_exp;
    return id;
}

ExpHandle propositionHandler::getProposition(int a_id) const
{
    VELCOR_ASSERT(a_id >= 0 && a_id < m_size);
    return m_propositions[a_id];
}

ExpHandle propositionHandler::getExp(int a_id) const
{
    VELCOR_ASSERT(a_id >= 0 && a_id < m_size);
    return m_expressions[a_id];
}

void propositionHandler::printAll(Symbols*)
{
    misc::Writer out(*getOutFile());
    out << commentChar() << "----------------Proposition Values " << '\n';
    for (int id = 1; id <= m_next_index; ++id) {
        ExpHandle value = m_expressions[id];
        // A conditional already decided by a constant stands for the branch
        // it selects.
        if (value->isIf()) {
            ExpHandle condition = value->operand(1);
            if (condition->isConst())
                value = condition->constValue() == 0 ? value->operand(3) : value->operand(2);
        }
        out << "ASSERT ";
        m_propositions[id]->print(false, TARGET, true);
        out << "=";
        value->print(false, TARGET, true);
        out << ";" << '\n';
    }
}
