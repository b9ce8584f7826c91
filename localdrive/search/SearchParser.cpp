#include "localdrive/search/SearchQuery.h"

#include "localdrive/search/SearchLexer.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/Text.h"

#include <algorithm>
#include <initializer_list>

namespace quenby::localdrive {
namespace {

constexpr int mostComparisons = 200;
// SQLite can only hold so many open parentheses.
constexpr int deepestNesting = 20;

enum class ValueType { text, date, flag, collection };

struct FieldRule {
    QLatin1String name;
    SearchField field;
    ValueType type;
};

constexpr FieldRule fieldRules[] = {
    {QLatin1String("title"), SearchField::title, ValueType::text},
    {QLatin1String("fullText"), SearchField::fullText, ValueType::text},
    {QLatin1String("mimeType"), SearchField::mimeType, ValueType::text},
    {QLatin1String("createdDate"), SearchField::createdDate, ValueType::date},
    {QLatin1String("modifiedDate"), SearchField::modifiedDate, ValueType::date},
    {QLatin1String("lastViewedByMeDate"), SearchField::lastViewedByMeDate, ValueType::date},
    {QLatin1String("trashed"), SearchField::trashed, ValueType::flag},
    {QLatin1String("starred"), SearchField::starred, ValueType::flag},
    {QLatin1String("hidden"), SearchField::hidden, ValueType::flag},
    {QLatin1String("sharedWithMe"), SearchField::sharedWithMe, ValueType::flag},
    {QLatin1String("parents"), SearchField::parents, ValueType::collection},
    {QLatin1String("owners"), SearchField::owners, ValueType::collection},
    {QLatin1String("writers"), SearchField::writers, ValueType::collection},
    {QLatin1String("readers"), SearchField::readers, ValueType::collection},
};

struct OperatorRule {
    QLatin1String name;
    SearchOperator op;
};

constexpr OperatorRule operatorRules[] = {
    {QLatin1String("contains"), SearchOperator::contains}, {QLatin1String("="), SearchOperator::equal},
    {QLatin1String("!="), SearchOperator::notEqual},       {QLatin1String("<"), SearchOperator::less},
    {QLatin1String("<="), SearchOperator::lessOrEqual},    {QLatin1String(">"), SearchOperator::greater},
    {QLatin1String(">="), SearchOperator::greaterOrEqual},
};

bool fits(const FieldRule& rule, SearchOperator op) {
    switch (rule.type) {
    case ValueType::text:
        if (rule.field == SearchField::fullText)
            return op == SearchOperator::contains;
        return op == SearchOperator::contains || op == SearchOperator::equal || op == SearchOperator::notEqual;
    case ValueType::date:
        return op != SearchOperator::contains;
    case ValueType::flag:
        return op == SearchOperator::equal || op == SearchOperator::notEqual;
    case ValueType::collection:
        break;
    }
    return false;
}

using Node = std::unique_ptr<SearchNode>;

// Recursive descent. After the first failure nothing more is taken, and every function returns an empty node.
class Parser {
public:
    explicit Parser(const QString& query)
        : lexer_(query) {
        advance();
    }

    Result<Node> parse() {
        if (token_.kind == SearchToken::Kind::end)
            return std::make_unique<SearchNode>();
        Node query = parseQuery();
        if (!failure_ && token_.kind != SearchToken::Kind::end)
            fail(QStringLiteral("\"and\" or \"or\""));
        if (failure_)
            return *failure_;
        return query;
    }

private:
    void advance() { token_ = lexer_.next(); }

    Node fail(const QString& expected) {
        if (!failure_)
            failure_ = apiError::invalid(
                QStringLiteral("q"),
                QStringLiteral("Invalid search query: expected %1 at position %2.").arg(expected).arg(token_.position));
        return nullptr;
    }

    static QString fewerNested() { return QStringLiteral("fewer terms nested or mixed"); }

    static int depthInside(const SearchNode& node) {
        return node.kind == SearchNode::Kind::comparison ? node.depth : node.depth + 1;
    }

    bool takeWord(const char* word) {
        if (token_.kind != SearchToken::Kind::word || token_.text != QLatin1String(word))
            return false;
        advance();
        return true;
    }

    Node parseQuery() {
        if (++depth_ > deepestNesting)
            return fail(fewerNested());
        Node left = parseTerm();
        while (left && !failure_) {
            const bool both = takeWord("and");
            if (!both && !takeWord("or"))
                break;
            left = join(both ? SearchNode::Kind::conjunction : SearchNode::Kind::disjunction, std::move(left),
                        parseTerm());
        }
        --depth_;
        return left;
    }

    Node join(SearchNode::Kind kind, Node left, Node right) {
        if (failure_)
            return nullptr;
        auto node = std::make_unique<SearchNode>();
        node->kind = kind;
        // A chain of one operator is written without parentheses; anything else inside gets them.
        node->depth = left->kind == kind && right ? left->depth : depthInside(*left);
        if (right)
            node->depth = std::max(node->depth, depthInside(*right));
        if (node->depth > deepestNesting)
            return fail(fewerNested());
        node->left = std::move(left);
        node->right = std::move(right);
        return node;
    }

    Node parseTerm() {
        bool negated = false;
        while (takeWord("not"))
            negated = !negated;
        Node term = parsePositive();
        return negated ? join(SearchNode::Kind::negation, std::move(term), nullptr) : std::move(term);
    }

    Node parsePositive() {
        if (token_.kind == SearchToken::Kind::open) {
            advance();
            Node inner = parseQuery();
            if (failure_ || token_.kind != SearchToken::Kind::close)
                return fail(QStringLiteral("a closing parenthesis"));
            advance();
            return inner;
        }
        if (++comparisons_ > mostComparisons)
            return fail(QStringLiteral("fewer terms"));
        return token_.kind == SearchToken::Kind::text ? parseMembership() : parseComparison();
    }

    const FieldRule* takeField(bool collection) {
        for (const FieldRule& rule : fieldRules)
            if ((rule.type == ValueType::collection) == collection && token_.kind == SearchToken::Kind::word &&
                token_.text == rule.name) {
                advance();
                return &rule;
            }
        return nullptr;
    }

    Node parseMembership() {
        auto node = std::make_unique<SearchNode>();
        node->kind = SearchNode::Kind::comparison;
        node->op = SearchOperator::in;
        node->value = token_.text;
        advance();
        if (!takeWord("in"))
            return fail(QStringLiteral("\"in\""));
        const FieldRule* rule = takeField(true);
        if (!rule)
            return fail(QStringLiteral("parents, owners, writers or readers"));
        node->field = rule->field;
        return node;
    }

    Node parseComparison() {
        const FieldRule* rule = takeField(false);
        if (!rule)
            return fail(QStringLiteral("a field"));
        const auto* found = std::find_if(std::begin(operatorRules), std::end(operatorRules), [this](const auto& each) {
            return (token_.kind == SearchToken::Kind::word || token_.kind == SearchToken::Kind::sign) &&
                   token_.text == each.name;
        });
        if (found == std::end(operatorRules) || !fits(*rule, found->op))
            return fail(QStringLiteral("an operator that fits %1").arg(rule->name));
        advance();
        auto node = std::make_unique<SearchNode>();
        node->kind = SearchNode::Kind::comparison;
        node->field = rule->field;
        node->op = found->op;
        node->value = valueOf(*rule);
        if (!node->value.isValid())
            return fail(rule->type == ValueType::flag   ? QStringLiteral("true or false")
                        : rule->type == ValueType::date ? QStringLiteral("a date in quotes")
                                                        : QStringLiteral("a text in quotes"));
        advance();
        return node;
    }

    QVariant valueOf(const FieldRule& rule) const {
        if (rule.type == ValueType::flag) {
            if (token_.kind != SearchToken::Kind::word)
                return {};
            if (token_.text == QLatin1String("true"))
                return true;
            return token_.text == QLatin1String("false") ? QVariant(false) : QVariant();
        }
        if (token_.kind != SearchToken::Kind::text)
            return {};
        if (rule.type == ValueType::text)
            return token_.text;
        const std::optional<QDateTime> date = parsedDate(token_.text);
        return date ? QVariant(date->toMSecsSinceEpoch()) : QVariant();
    }

    SearchLexer lexer_;
    SearchToken token_;
    MaybeError failure_;
    int depth_ = 0;
    int comparisons_ = 0;
};

} // namespace

Result<std::unique_ptr<SearchNode>> parseSearch(const QString& query) { return Parser(cleaned(query)).parse(); }

} // namespace quenby::localdrive
