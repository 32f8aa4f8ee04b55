// Feeds arbitrary text to the query builder's parser in one of its dialects (chosen by the first
// byte) and checks the round trip inside: whatever parses must generate text that parses back to
// the same model and generates the same text again, under the default layout and under one that
// breaks, indents, parenthesizes and wraps everything. Parse errors are the expected refusal;
// a crash, a sanitizer report or a broken round trip is a finding.
#include "core/querybuilder/SqlGenerator.h"
#include "core/querybuilder/SqlParser.h"

#include <cstdint>
#include <cstdlib>

namespace {

GeneratorOptions everythingBroken()
{
    GeneratorOptions o;
    for (SqlFormat *f : {&o.mainQuery, &o.subqueries, &o.derivedQueries}) {
        f->mainPartNewLine = f->keywordsNewLine = f->selectItemNewLine = true;
        f->fromObjectNewLine = f->fromJoinNewLine = f->groupItemNewLine = true;
        f->whereNewLine = f->havingNewLine = 3;
        f->globalIndent = 2;
    }
    o.wordWrap = true;
    o.rightMargin = 12;
    o.parenthesizeAndGroups = o.parenthesizeSingleCriterion = true;
    return o;
}

void roundTrip(const Query &query, SqlDialect dialect, const GeneratorOptions &options)
{
    const SqlGenerator generator({dialect, {}}, options);
    const QString text = generator.generate(query);
    SqlParser::Result again;
    try {
        again = SqlParser::parse(text, dialect);
    } catch (const SqlParseError &) {
        std::abort(); // generated text must always parse
    }
    if (!again.isSelect || !(again.query == query) || generator.generate(again.query) != text)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0 || size > 20000)
        return 0;
    const SqlDialect dialect = SqlDialect(data[0] % (int(SqlDialect::Generic) + 1));
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data + 1), qsizetype(size - 1));
    SqlParser::Result result;
    try {
        result = SqlParser::parse(text, dialect);
    } catch (const SqlParseError &) {
        return 0;
    }
    if (!result.isSelect || result.query.isEmpty())
        return 0;
    roundTrip(result.query, dialect, GeneratorOptions());
    roundTrip(result.query, dialect, everythingBroken());
    return 0;
}
