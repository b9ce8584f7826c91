#include "workspace/policy/ExportLinks.h"

#include "workspace/policy/AddressPieces.h"

#include <algorithm>
#include <array>

namespace quenby {
namespace {

constexpr std::size_t mostForms = 6;

// The forms that the editor of one kind of document offers.
struct ExportsOfKind {
    const char* folder; // on the Docs host
    std::array<const char*, mostForms> pieces;
};

constexpr std::array exportsOfKinds{
    ExportsOfKind{"/document/",
                  {"export?format=docx&id=", "export?format=odt&id=", "export?format=txt&id=", "export?format=pdf&id=",
                   "export?format=zip&id="}},
    ExportsOfKind{"/presentation/",
                  {"/export/txt?id=", "/export/pptx?id=", "/export/jpeg?id=", "/export/png?id=", "/export/pdf?id=",
                   "/export/svg?id="}},
    ExportsOfKind{"/spreadsheets/",
                  {"/export?format=xlsx&id=", "/export?format=ods&id=", "/export?format=pdf&id=",
                   "/export?format=csv&id=", "/export?format=tsv&id=", "/export?format=zip&id="}},
    ExportsOfKind{"/drawings/", {"/export/pdf?id=", "/export/svg?id=", "/export/png?id=", "/export/jpeg?id="}},
};

bool isExportOf(const ExportsOfKind& kind, const QUrl& request, const WebPlaces& places) {
    return places.docs.within(QString::fromLatin1(kind.folder)).contains(request) &&
           std::any_of(kind.pieces.begin(), kind.pieces.end(),
                       [&request](const char* piece) { return piece && hasPiece(request, QLatin1String(piece)); });
}

bool isArchive(const QUrl& request, const WebPlaces& places) {
    return places.drive.within(QStringLiteral("/e/export-result")).isAt(request) &&
           hasPiece(request, QLatin1String("/e/export-result?authuser=0&archiveId"));
}

} // namespace

bool isExportLink(const QUrl& request, const WebPlaces& places) {
    return isArchive(request, places) ||
           std::any_of(exportsOfKinds.begin(), exportsOfKinds.end(),
                       [&](const ExportsOfKind& kind) { return isExportOf(kind, request, places); });
}

} // namespace quenby
