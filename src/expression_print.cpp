// The text of every node kind and operator in the three checker languages.
// Keywords that differ between the languages come from the syntax tables;
// everything else is fixed punctuation.
#include <iostream>

#include "assertion.h"
#include "expression.h"
#include "misc/trace.h"
#include "misc/writer.h"

namespace {

void forgotOperator(const char* a_kind, operator_t a_operator)
{
    std::cerr << "ERROR!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!\n"
              << "In " << a_kind << "!\n"
              << "We forgot to print operator " << a_operator << '\n';
}

const char* operatorText(operator_t a_operator)
{
    switch (a_operator) {
    case ADD:
        return "+";
    case SUB:
        return "-";
    case AND:
        return andStr();
    case OR:
        return orStr();
    case EQ:
    case NEQ:
        return "=";
    case GT:
        return ">";
    case LT:
        return "<";
    case GE:
        return ">=";
    case MUL:
        return "*";
    case DIV:
        return "/";
    default:
        return "";
    }
}

} // namespace

void ConstExp::print(bool, system_t, bool)
{
    misc::Writer(*getOutFile()) << m_value;
}

void LabelExp::print(bool, system_t, bool)
{
    misc::Writer(*getOutFile()) << m_value;
}

void VarExp::print(bool a_prime, system_t a_system, bool)
{
    if (m_value)
        m_value->print(a_prime, a_system != TARGET);
    else
        misc::Writer(*getOutFile()) << m_name.c_str();
}

void UnaryExp::print(bool a_prime, system_t a_system, bool)
{
    misc::Writer out(*getOutFile());
    switch (m_operator) {
    case NOT:
        out << notStr();
        m_operand->print(a_prime, a_system, false);
        break;
    case ADDRESS:
        out << addressStr() << "(";
        m_operand->print(a_prime, a_system, false);
        out << ")";
        break;
    case NEG:
        out << "(- ";
        m_operand->print(a_prime, a_system, false);
        out << ")";
        break;
    case ADDR:
        out << "(ADDR( ";
        m_operand->print(a_prime, a_system, false);
        out << "))";
        break;
    case ELSE:
        out << elseStr();
        m_operand->print(a_prime, a_system, false);
        out << ")";
        break;
    case CNTLZW:
        out << "CNTLZW(";
        m_operand->print(a_prime, a_system, false);
        out << ")";
        break;
    default:
        forgotOperator("UnaryExp", m_operator);
    }
}

void BinaryExp::print(bool a_prime, system_t a_system, bool)
{
    misc::Writer out(*getOutFile());
    auto function = [&](const char* a_name) {
        out << a_name << "(";
        l_operand->print(a_prime, a_system, false);
        out << ",";
        r_operand->print(a_prime, a_system, false);
        out << ")";
    };
    out << "(";
    if (m_operator == NEQ)
        out << notStr();
    if (getOutFormat() == CVC && m_operator == MUL && !l_operand->isConst() && !r_operand->isConst()) {
        function("MUL");
    } else if (m_operator == ANDC) {
        function("ANDC");
    } else if (m_operator == SELECT_BIT) {
        function("SELECT_BIT");
    } else if (m_operator == LOOKUP) {
        if (l_operand->m_operator == ADDR) {
            l_operand->Value()->print(a_prime, a_system, false);
        } else {
            r_operand->print(a_prime, a_system, false);
            out << "[";
            l_operand->print(a_prime, a_system, false);
            out << "]";
        }
    } else {
        l_operand->print(a_prime, a_system, false);
        out << operatorText(m_operator);
        if (m_operator == GT || m_operator == LT || m_operator == GE)
            addComparisonAssertion();
        r_operand->print(a_prime, a_system, false);
    }
    out << ")";
}

// Ties a strict comparison to a non-strict one, once per node, while the
// common assertions collect.
void BinaryExp::addComparisonAssertion()
{
    if (mark || !commonAssertions.addMore())
        return;
    bool left_const = l_operand->m_type == CONST_EXP;
    bool right_const = r_operand->m_type == CONST_EXP;
    if (!((left_const && !right_const) || (right_const && !left_const) || r_operand->m_type == VAR_EXP ||
          l_operand->m_type == VAR_EXP))
        return;
    // A handle made from this node joins the counter of the handles that
    // already hold it: the assertion shares the very node being printed.
    ExpHandle self(this);
    ExpHandle one = new ConstExp(1);
    ExpHandle tie;
    switch (m_operator) {
    case GT:
        misc::traceErr() << "AddAssertion here 1\n";
        tie = new BinaryExp(GE, l_operand, new BinaryExp(ADD, r_operand, one));
        break;
    case LT:
        misc::traceErr() << "AddAssertion here 2\n";
        tie = new BinaryExp(GE, r_operand, new BinaryExp(ADD, l_operand, one));
        break;
    default:
        misc::traceErr() << "AddAssertion here 3\n";
        tie = new BinaryExp(GT, l_operand, new BinaryExp(SUB, r_operand, one));
        break;
    }
    commonAssertions.addAssertion(new BinaryExp(EQ, self, tie));
    setMark();
}

void TrinaryExp::print(TN* a_tn, bool, system_t a_system, bool a_flag)
{
    a_tn->print(true, a_system != TARGET);
    misc::Writer(*getOutFile()) << " =";
    print(false, a_system, a_flag);
}

void TrinaryExp::print(bool a_prime, system_t a_system, bool)
{
    misc::Writer out(*getOutFile());
    if (m_operator == IF) {
        if (operand1->isConst()) {
            // A decided condition prints only the branch it selects.
            (operand1->constValue() != 0 ? operand2 : operand3)->print(a_prime, a_system, false);
            return;
        }
        out << ifStr();
        operand1->print(a_prime, a_system, false);
        out << thenStr() << '\n';
        operand2->print(a_prime, a_system, false);
        out << elseStr() << '\n';
        operand3->print(a_prime, a_system, false);
        out << endIfStr();
    } else if (m_operator == UPDATE) {
        if (getOutFormat() == CVC) {
            out << "(";
            operand1->print(a_prime, a_system, false);
            out << " WITH [";
            operand2->print(false, a_system, false);
            out << "] := ";
            operand3->print(false, a_system, false);
            out << "\n)";
            return;
        }
        if (operand1->m_operator == UPDATE) {
            // Nested updates of one array: a conjunction of cell equations.
            const char* array = operand1->getName();
            operand1->print(a_prime, a_system, false);
            out << andStr() << (a_prime ? "P" : "") << (a_system == SOURCE ? "s" : "t") << array;
        } else {
            operand1->print(a_prime, a_system, false);
        }
        out << "[";
        operand2->print(false, a_system, false);
        out << "]=";
        operand3->print(false, a_system, false);
    } else {
        forgotOperator("TrinaryExp", m_operator);
    }
}

void BitArrayExp::print(bool a_prime, system_t a_system, bool a_flag)
{
    misc::Writer out(*getOutFile());
    out << "BitArray(";
    for (std::size_t i = 0; i < operands.size(); ++i) {
        if (i)
            out << ",";
        operands[i]->print(a_prime, a_system, a_flag);
    }
    out << ")";
}
