// Office Open XML (ECMA-376): a ZIP archive of parts that are found by the relations between them.
#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>

namespace quenby::localdrive {

class OfficePackage {
public:
    // Kind of a relation ("slide") and its target, as seen from the owner's folder. The n-th is called "rId<n>".
    using Relations = QList<QPair<QByteArray, QByteArray>>;

    // `mainPart` is where readers begin.
    explicit OfficePackage(const QByteArray& mainPart);

    // `type` is the distinctive part of the content type: "wordprocessingml.document.main".
    void addPart(const QByteArray& name, const QByteArray& type, const QByteArray& xml,
                 const Relations& relations = {});
    QByteArray bytes() const;

    // xmlns="..." of one of the languages ("wordprocessingml"), and the one of references to relations.
    static QByteArray xmlns(const QByteArray& language, const QByteArray& prefix = {});
    static QByteArray relationXmlns();

private:
    void addRelations(const QByteArray& name, const Relations& relations);

    QList<QPair<QByteArray, QByteArray>> files_; // name and content
    QByteArray types_;
};

} // namespace quenby::localdrive
