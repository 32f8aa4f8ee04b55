#pragma once
// A fixed set of SQL words, looked up without regard to case and without allocating: the parser
// asks it for nearly every token.

#include <QStringView>

#include <initializer_list>
#include <string>
#include <vector>

class SqlWordSet
{
public:
    SqlWordSet(std::initializer_list<const char *> upperWords);
    bool contains(QStringView word) const;

private:
    std::vector<std::string> m_words; // sorted, upper case
    int m_longest = 0;
};
