// Path conditions as disjunctions of clauses.
#include "DNF.h"

#include <cstdint>
#include <iostream>
#include <iterator>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

#include "misc/stop.h"
#include "misc/trace.h"
#include "misc/writer.h"

bool DNF::add(Clause&& a_clause)
{
    // An empty clause is true: adding it to a disjunction changes nothing
    // worth recording.
    if (a_clause.isTrue())
        return true;
    m_clauses.push_front(std::move(a_clause));
    m_true = false;
    m_false = false;
    return false;
}

bool DNF::add(const Clause& a_clause)
{
    return add(Clause(a_clause));
}

bool DNF::remove(iterator a_position)
{
    m_clauses.erase(a_position);
    if (m_clauses.empty()) {
        m_true = false;
        m_false = true;
        return false;
    }
    m_true = false;
    m_false = false;
    return true;
}

bool DNF::isIn(const Clause& a_clause) const
{
    for (const Clause& clause : m_clauses) {
        misc::traceOut() << " From isIn DNF \n";
        if (clause == a_clause)
            return true;
    }
    return false;
}

ExpHandle DNF::getExp() const
{
    if (m_true)
        return new BinaryExp(EQ, new ConstExp(1), new ConstExp(1));
    if (m_false)
        return new BinaryExp(EQ, new ConstExp(1), new ConstExp(0));
    ExpHandle result = new ConstExp(0);
    bool first = true;
    for (const Clause& clause : m_clauses) {
        ExpHandle condition = clause.getCond();
        VELCOR_ASSERT(!condition.isNull());
        result = first ? condition : ExpHandle(new BinaryExp(OR, condition, result));
        first = false;
    }
    return result;
}

void DNF::print() const
{
    misc::Writer out(*getOutFile());
    const char comment = commentChar();
    // Printed for nearly every instruction: the constant lines in one piece.
    if (m_true || (!m_false && m_clauses.empty())) {
        out << comment << "c0true\n";
        return;
    }
    if (m_false) {
        out << comment << "c0false\n";
        return;
    }
    int index = 0;
    for (const Clause& clause : m_clauses) {
        out << comment << "c" << index << "= ";
        clause.print();
        out << '\n';
        ++index;
    }
}

DNF andDNF(const DNF& a_dnf, int a_id, bool a_bool)
{
    DNF result(a_dnf);
    if (result.m_clauses.empty()) {
        result.m_clauses.push_front(Clause(a_id, a_bool));
        result.m_true = false;
        result.m_false = false;
        return result;
    }
    for (auto it = result.m_clauses.begin(); it != result.m_clauses.end();) {
        auto next = std::next(it);
        if (!it->andClause(a_id, a_bool)) {
            result.print();
            result.remove(it);
        }
        it = next;
    }
    if (result.m_clauses.empty())
        return DNF(false);
    return result;
}

namespace {

// Merges (X and p) or (X and not p) into X. The rule, in terms of the list:
// take the first clause x that has a complementary clause after it (the
// same propositions, one of them of the other sign), and the first such y
// after x; drop that literal from x and the clause y; start again from the
// front, until no clause has one. Looking at every pair on every pass made
// path conditions of a few hundred clauses cost minutes; here each clause
// is found by a hash of its literals, and a merge looks again only at the
// clauses that x and y can pair with.
class ComplementMerge {
public:
    explicit ComplementMerge(DNF::Clauses& a_clauses) : m_clauses(a_clauses) {}

    // False when a clause became empty (the disjunction is true).
    bool run()
    {
        for (Clause& clause : m_clauses) {
            Entry entry;
            entry.m_clause = &clause;
            entry.m_literals.assign(clause.begin(), clause.end());
            entry.m_hash = hashOf(entry.m_literals);
            m_entries.push_back(entry);
        }
        for (int i = 0; i < static_cast<int>(m_entries.size()); ++i)
            m_by_hash[m_entries[i].m_hash].insert(i);
        for (int i = 0; i < static_cast<int>(m_entries.size()); ++i)
            review(i);

        std::vector<bool> dropped(m_entries.size(), false);
        while (!m_candidates.empty()) {
            int x = *m_candidates.begin();
            Partner partner = partnerAfter(x);
            Entry& entry = m_entries[x];
            const intBool literal = entry.m_literals[partner.m_index];
            if (entry.m_clause->remove(literal.p_id))
                return false;
            m_merged = true;

            std::set<int> affected;
            collectPartners(partner.m_clause, affected);
            collectPartners(x, affected);
            m_by_hash[m_entries[partner.m_clause].m_hash].erase(partner.m_clause);
            m_candidates.erase(partner.m_clause);
            dropped[partner.m_clause] = true;
            affected.erase(partner.m_clause);

            m_by_hash[entry.m_hash].erase(x);
            entry.m_hash -= literalHash(literal);
            entry.m_literals.erase(entry.m_literals.begin() + partner.m_index);
            m_by_hash[entry.m_hash].insert(x);
            collectPartners(x, affected);
            affected.insert(x);
            for (int w : affected)
                review(w);
        }

        if (m_merged) {
            auto it = m_clauses.begin();
            for (std::size_t i = 0; i < m_entries.size(); ++i)
                it = dropped[i] ? m_clauses.erase(it) : std::next(it);
        }
        return true;
    }

    // Whether the run merged anything.
    bool merged() const { return m_merged; }

private:
    struct Entry {
        Clause* m_clause = nullptr;
        std::vector<intBool> m_literals;
        std::uint64_t m_hash = 0;
    };
    struct Partner {
        int m_clause = -1;
        std::size_t m_index = 0; // the literal of x whose sign differs
    };

    static std::uint64_t literalHash(intBool a_literal)
    {
        std::uint64_t value = static_cast<std::uint64_t>(static_cast<std::uint32_t>(a_literal.p_id)) * 2 +
                              (a_literal.m_bool ? 1 : 0);
        value = (value ^ (value >> 31)) * 0x7fb5d329728ea185ull;
        value = (value ^ (value >> 27)) * 0x81dadef4bc2dd44dull;
        return value ^ (value >> 33);
    }

    static std::uint64_t hashOf(const std::vector<intBool>& a_literals)
    {
        std::uint64_t hash = 0;
        for (intBool literal : a_literals)
            hash += literalHash(literal);
        return hash;
    }

    static std::uint64_t flippedHash(const Entry& a_entry, std::size_t a_index)
    {
        intBool literal = a_entry.m_literals[a_index];
        return a_entry.m_hash - literalHash(literal) + literalHash(Clause::negate(literal));
    }

    // Whether y has x's propositions in x's order, with the signs of x but
    // the one at a_index.
    bool complementAt(int a_x, int a_y, std::size_t a_index) const
    {
        const std::vector<intBool>& x = m_entries[a_x].m_literals;
        const std::vector<intBool>& y = m_entries[a_y].m_literals;
        if (x.size() != y.size())
            return false;
        for (std::size_t i = 0; i < x.size(); ++i)
            if (x[i].p_id != y[i].p_id || (x[i].m_bool != y[i].m_bool) != (i == a_index))
                return false;
        return true;
    }

    // The first clause after x that is complementary to it.
    Partner partnerAfter(int a_x) const
    {
        Partner best;
        const Entry& entry = m_entries[a_x];
        for (std::size_t i = 0; i < entry.m_literals.size(); ++i) {
            auto bucket = m_by_hash.find(flippedHash(entry, i));
            if (bucket == m_by_hash.end())
                continue;
            for (auto y = bucket->second.upper_bound(a_x); y != bucket->second.end(); ++y) {
                if (best.m_clause >= 0 && *y >= best.m_clause)
                    break;
                if (complementAt(a_x, *y, i)) {
                    best.m_clause = *y;
                    best.m_index = i;
                    break;
                }
            }
        }
        return best;
    }

    // Every clause that may be complementary to clause a_clause.
    void collectPartners(int a_clause, std::set<int>& a_into) const
    {
        const Entry& entry = m_entries[a_clause];
        for (std::size_t i = 0; i < entry.m_literals.size(); ++i) {
            auto bucket = m_by_hash.find(flippedHash(entry, i));
            if (bucket != m_by_hash.end())
                a_into.insert(bucket->second.begin(), bucket->second.end());
        }
    }

    void review(int a_clause)
    {
        if (partnerAfter(a_clause).m_clause >= 0)
            m_candidates.insert(a_clause);
        else
            m_candidates.erase(a_clause);
    }

    DNF::Clauses& m_clauses;
    std::vector<Entry> m_entries;
    std::unordered_map<std::uint64_t, std::set<int>> m_by_hash;
    std::set<int> m_candidates;
    bool m_merged = false;
};

} // namespace

DNF simplify(DNF a_first, DNF a_second)
{
    if (a_first.isTrue() || a_second.isTrue())
        return DNF();
    DNF result;
    if (a_first.isFalse()) {
        result = std::move(a_second);
    } else if (a_second.isFalse()) {
        result = std::move(a_first);
    } else {
        result = std::move(a_first);
        for (Clause& clause : a_second)
            result.add(std::move(clause));
    }

    // A single clause has nothing to merge with.
    if (result.m_clauses.size() < 2)
        return result;
    ComplementMerge merge(result.m_clauses);
    if (!merge.run())
        return DNF();
    if (merge.merged()) {
        result.m_true = false;
        result.m_false = false;
    }
    return result;
}
