// Tables of source types and source variables.
#ifndef VELCOR_PARSE_TYPE_TABLE_H
#define VELCOR_PARSE_TYPE_TABLE_H

class CTn {
public:
    bool getLocal() const { return m_local; }

private:
    bool m_local = false;
};

class typeTable;

class symbolTable {
public:
    CTn* getSymbol(const char*) const { return nullptr; }
};

// Process-wide tables; the run leaves both unset.
extern typeTable* type_table;
extern symbolTable* symbol_table;

#endif
