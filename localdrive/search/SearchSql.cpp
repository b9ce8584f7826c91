#include "localdrive/search/SearchSql.h"

#include "localdrive/store/Access.h"
#include "localdrive/store/Text.h"

namespace quenby::localdrive {
namespace {

class Writer {
public:
    explicit Writer(const SearchNames& names)
        : names_(names) {}

    SearchCondition take() { return std::move(condition_); }

    void write(const SearchNode& node) {
        switch (node.kind) {
        case SearchNode::Kind::everything:
            condition_.sql += QLatin1String("1");
            break;
        case SearchNode::Kind::comparison:
            writeComparison(node);
            break;
        case SearchNode::Kind::negation:
            condition_.sql += QLatin1String("NOT ");
            writeInside(*node.left, false);
            break;
        case SearchNode::Kind::conjunction:
        case SearchNode::Kind::disjunction:
            writeInside(*node.left, node.left->kind == node.kind);
            condition_.sql +=
                node.kind == SearchNode::Kind::conjunction ? QLatin1String(" AND ") : QLatin1String(" OR ");
            writeInside(*node.right, false);
            break;
        }
    }

private:
    void writeInside(const SearchNode& node, bool sameChain) {
        const bool bare = sameChain || node.kind == SearchNode::Kind::comparison;
        condition_.sql += bare ? QLatin1String("") : QLatin1String("(");
        write(node);
        condition_.sql += bare ? QLatin1String("") : QLatin1String(")");
    }

    void add(const QString& sql, const QVariantList& values) {
        condition_.sql += sql;
        condition_.values += values;
    }

    static QString sign(SearchOperator op) {
        switch (op) {
        case SearchOperator::notEqual:
            return QStringLiteral("<>");
        case SearchOperator::less:
            return QStringLiteral("<");
        case SearchOperator::lessOrEqual:
            return QStringLiteral("<=");
        case SearchOperator::greater:
            return QStringLiteral(">");
        case SearchOperator::greaterOrEqual:
            return QStringLiteral(">=");
        case SearchOperator::equal:
        case SearchOperator::contains:
        case SearchOperator::in:
            break;
        }
        return QStringLiteral("=");
    }

    void compare(const char* column, const SearchNode& node) {
        add(QStringLiteral("f.%1 %2 ?").arg(QLatin1String(column), sign(node.op)), {node.value});
    }

    // A file that was never viewed is neither before nor after a date, and not equal to any.
    void compareViewed(const SearchNode& node) {
        const bool whenNever = node.op == SearchOperator::notEqual;
        add(QStringLiteral("IFNULL(f.viewed %1 ?, %2)").arg(sign(node.op)).arg(whenNever ? 1 : 0), {node.value});
    }

    void containsTitle(const SearchNode& node) {
        add(QStringLiteral("instr(f.title_key, ?) > 0"), {searchKey(node.value.toString())});
    }

    void holder(const SearchNode& node, Role atLeast) {
        const QString name = node.value.toString();
        const QString address = name == QLatin1String("me") ? names_.me : name;
        add(QStringLiteral("EXISTS(SELECT 1 FROM permissions p WHERE p.file_id = f.id AND p.id = ? AND p.role >= ?)"),
            {permissionId(QStringLiteral("user"), address, false), static_cast<int>(atLeast)});
    }

    void writeComparison(const SearchNode& node) {
        switch (node.field) {
        case SearchField::title:
            return node.op == SearchOperator::contains ? containsTitle(node) : compare("title", node);
        case SearchField::fullText:
            return containsTitle(node);
        case SearchField::mimeType:
            if (node.op == SearchOperator::contains)
                return add(QStringLiteral("instr(f.mime_type, ?) > 0"), {node.value});
            return compare("mime_type", node);
        case SearchField::createdDate:
            return compare("created", node);
        case SearchField::modifiedDate:
            return compare("modified", node);
        case SearchField::lastViewedByMeDate:
            return compareViewed(node);
        case SearchField::trashed:
            return compare("trashed", node);
        case SearchField::starred:
            return compare("starred", node);
        case SearchField::hidden:
            return compare("hidden", node);
        case SearchField::sharedWithMe:
            return add(QStringLiteral("(f.shared_with_me IS NOT NULL) %1 ?").arg(sign(node.op)), {node.value});
        case SearchField::parents: {
            const QString name = node.value.toString();
            return add(QStringLiteral("f.id IN (SELECT file_id FROM parents WHERE parent_id = ?)"),
                       {name == QLatin1String("root") ? names_.rootFolderId : name});
        }
        case SearchField::owners:
            return holder(node, Role::owner);
        case SearchField::writers:
            return holder(node, Role::writer);
        case SearchField::readers:
            return holder(node, Role::reader);
        }
    }

    const SearchNames& names_;
    SearchCondition condition_;
};

} // namespace

SearchCondition searchCondition(const SearchNode& search, const SearchNames& names) {
    Writer writer(names);
    writer.write(search);
    return writer.take();
}

} // namespace quenby::localdrive
