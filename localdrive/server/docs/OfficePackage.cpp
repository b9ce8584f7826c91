#include "localdrive/server/docs/OfficePackage.h"

#include "localdrive/server/docs/Markup.h"
#include "localdrive/server/docs/ZipArchive.h"

namespace quenby::localdrive {
namespace {

constexpr char site[] = "http://schemas.openxmlformats.org/";

} // namespace

OfficePackage::OfficePackage(const QByteArray& mainPart) {
    addRelations("_rels/.rels", {{"officeDocument", mainPart}});
}

void OfficePackage::addPart(const QByteArray& name, const QByteArray& type, const QByteArray& xml,
                            const Relations& relations) {
    types_ += "<Override PartName=\"/" + name + "\" ContentType=\"application/vnd.openxmlformats-officedocument." +
              type + "+xml\"/>";
    files_.emplaceBack(name, xmlHead + xml);
    if (relations.isEmpty())
        return;
    const qsizetype slash = name.lastIndexOf('/') + 1;
    addRelations(name.first(slash) + "_rels/" + name.mid(slash) + ".rels", relations);
}

void OfficePackage::addRelations(const QByteArray& name, const Relations& relations) {
    QByteArray xml = xmlHead + QByteArray("<Relationships xmlns=\"") + site + "package/2006/relationships\">";
    int number = 0;
    for (const auto& [kind, target] : relations)
        xml += "<Relationship Id=\"rId" + QByteArray::number(++number) + "\" Type=\"" + site +
               "officeDocument/2006/relationships/" + kind + "\" Target=\"" + target + "\"/>";
    files_.emplaceBack(name, xml + "</Relationships>");
}

// What tells the types comes first, then where to begin: so a file is known for what it is by its first bytes.
QByteArray OfficePackage::bytes() const {
    ZipArchive archive;
    archive.add("[Content_Types].xml",
                xmlHead + QByteArray("<Types xmlns=\"") + site +
                    "package/2006/content-types\"><Default Extension=\"rels\" "
                    "ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>" +
                    types_ + "</Types>");
    for (const auto& [name, content] : files_)
        archive.add(name, content);
    return archive.bytes();
}

QByteArray OfficePackage::xmlns(const QByteArray& language, const QByteArray& prefix) {
    return " xmlns" + (prefix.isEmpty() ? QByteArray() : ':' + prefix) + "=\"" + site + language + "/2006/main\"";
}

QByteArray OfficePackage::relationXmlns() {
    return QByteArray(" xmlns:r=\"") + site + "officeDocument/2006/relationships\"";
}

} // namespace quenby::localdrive
