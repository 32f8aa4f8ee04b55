#include "core/querybuilder/SqlWords.h"

#include <algorithm>
#include <string_view>

SqlWordSet::SqlWordSet(std::initializer_list<const char *> upperWords)
{
    for (const char *w : upperWords) {
        m_words.emplace_back(w);
        m_longest = std::max(m_longest, int(m_words.back().size()));
    }
    std::sort(m_words.begin(), m_words.end());
}

bool SqlWordSet::contains(QStringView word) const
{
    if (word.size() > m_longest || word.isEmpty())
        return false;
    char buffer[64];
    for (qsizetype i = 0; i < word.size(); ++i) {
        const char16_t c = word.at(i).unicode();
        if (c > 127)
            return false;
        buffer[i] = char(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    }
    const std::string_view key(buffer, size_t(word.size()));
    const auto it = std::lower_bound(m_words.begin(), m_words.end(), key,
                                     [](const std::string &a, std::string_view b) { return std::string_view(a) < b; });
    return it != m_words.end() && std::string_view(*it) == key;
}
