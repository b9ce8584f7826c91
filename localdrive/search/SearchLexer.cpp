#include "localdrive/search/SearchLexer.h"

namespace quenby::localdrive {
namespace {

bool isWordCharacter(QChar c) { return c.isLetterOrNumber() || c == QLatin1Char('_'); }

bool isSignCharacter(QChar c) {
    return c == QLatin1Char('=') || c == QLatin1Char('!') || c == QLatin1Char('<') || c == QLatin1Char('>');
}

} // namespace

SearchToken SearchLexer::next() {
    while (at_ < query_.size() && query_[at_].isSpace())
        ++at_;
    if (at_ == query_.size())
        return {SearchToken::Kind::end, {}, at_};
    const QChar c = query_[at_];
    if (c == QLatin1Char('\''))
        return quoted();
    if (isWordCharacter(c))
        return run(SearchToken::Kind::word, isWordCharacter);
    if (isSignCharacter(c))
        return run(SearchToken::Kind::sign, isSignCharacter);
    const auto kind = c == QLatin1Char('(')   ? SearchToken::Kind::open
                      : c == QLatin1Char(')') ? SearchToken::Kind::close
                                              : SearchToken::Kind::broken;
    return {kind, c, at_++};
}

SearchToken SearchLexer::quoted() {
    SearchToken token{SearchToken::Kind::text, QStringLiteral(""), at_++};
    while (at_ < query_.size()) {
        QChar c = query_[at_++];
        if (c == QLatin1Char('\''))
            return token;
        if (c == QLatin1Char('\\') && at_ < query_.size())
            c = query_[at_++];
        token.text += c;
    }
    token.kind = SearchToken::Kind::broken;
    return token;
}

SearchToken SearchLexer::run(SearchToken::Kind kind, bool (*belongs)(QChar)) {
    const qsizetype start = at_;
    while (at_ < query_.size() && belongs(query_[at_]))
        ++at_;
    return {kind, query_.sliced(start, at_ - start), start};
}

} // namespace quenby::localdrive
