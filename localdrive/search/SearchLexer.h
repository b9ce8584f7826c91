// The words, signs and quoted texts of a search query.
#pragma once

#include <QString>

namespace quenby::localdrive {

struct SearchToken {
    enum class Kind { end, word, text, sign, open, close, broken };

    Kind kind = Kind::end;
    QString text;           // of a quoted text: without its quotes and escapes
    qsizetype position = 0; // of the first character in the query, counted from 0
};

class SearchLexer {
public:
    explicit SearchLexer(QString query)
        : query_(std::move(query)) {}

    // `end` for ever once everything is taken. A text without its closing quote is `broken`, as is any character that
    // has no meaning.
    SearchToken next();

private:
    SearchToken quoted();
    SearchToken run(SearchToken::Kind kind, bool (*belongs)(QChar));

    const QString query_;
    qsizetype at_ = 0;
};

} // namespace quenby::localdrive
