#include "localdrive/server/docs/Markup.h"
#include "localdrive/server/docs/OfficeDocuments.h"
#include "localdrive/server/docs/OfficePackage.h"

namespace quenby::localdrive {
namespace {

// Lengths are in 914400ths of an inch. A slide is 16 by 9.
constexpr char slideSize[] = "<p:sldSz cx=\"12192000\" cy=\"6858000\"/><p:notesSz cx=\"6858000\" cy=\"9144000\"/>";
constexpr char titleFrame[] = "<a:off x=\"762000\" y=\"457200\"/><a:ext cx=\"10668000\" cy=\"1143000\"/>";
constexpr char textFrame[] = "<a:off x=\"762000\" y=\"1828800\"/><a:ext cx=\"10668000\" cy=\"4419600\"/>";

constexpr char groupHead[] = "<p:nvGrpSpPr><p:cNvPr id=\"1\" name=\"\"/><p:cNvGrpSpPr/><p:nvPr/></p:nvGrpSpPr>"
                             "<p:grpSpPr><a:xfrm><a:off x=\"0\" y=\"0\"/><a:ext cx=\"0\" cy=\"0\"/>"
                             "<a:chOff x=\"0\" y=\"0\"/><a:chExt cx=\"0\" cy=\"0\"/></a:xfrm></p:grpSpPr>";

// A theme must have three of each; these are the plainest.
constexpr char themeFormats[] =
    "<a:fmtScheme name=\"Plain\"><a:fillStyleLst>"
    "<a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill><a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill>"
    "<a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill></a:fillStyleLst><a:lnStyleLst>"
    "<a:ln w=\"6350\"><a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill></a:ln>"
    "<a:ln w=\"12700\"><a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill></a:ln>"
    "<a:ln w=\"19050\"><a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill></a:ln></a:lnStyleLst>"
    "<a:effectStyleLst><a:effectStyle><a:effectLst/></a:effectStyle><a:effectStyle><a:effectLst/></a:effectStyle>"
    "<a:effectStyle><a:effectLst/></a:effectStyle></a:effectStyleLst><a:bgFillStyleLst>"
    "<a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill><a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill>"
    "<a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill></a:bgFillStyleLst></a:fmtScheme>";

QByteArray colour(const QByteArray& name, const QByteArray& rgb) {
    return "<a:" + name + "><a:srgbClr val=\"" + rgb + "\"/></a:" + name + '>';
}

QByteArray theme() {
    const QByteArray fonts = "<a:latin typeface=\"Arial\"/><a:ea typeface=\"\"/><a:cs typeface=\"\"/>";
    return "<a:theme" + OfficePackage::xmlns("drawingml", "a") +
           " name=\"Plain\"><a:themeElements><a:clrScheme name=\"Plain\">" + colour("dk1", "1D2530") +
           colour("lt1", "FFFFFF") + colour("dk2", "5A6574") + colour("lt2", "EEF1F5") + colour("accent1", "2A5FBD") +
           colour("accent2", "2C975D") + colour("accent3", "E0A024") + colour("accent4", "C95046") +
           colour("accent5", "7A4FC4") + colour("accent6", "2A93A8") + colour("hlink", "2A5FBD") +
           colour("folHlink", "7A4FC4") + "</a:clrScheme><a:fontScheme name=\"Plain\"><a:majorFont>" + fonts +
           "</a:majorFont><a:minorFont>" + fonts + "</a:minorFont></a:fontScheme>" + themeFormats +
           "</a:themeElements></a:theme>";
}

QByteArray drawingParagraphs(const QString& text) {
    QByteArray xml;
    for (const QString& line : text.split(QLatin1Char('\n')))
        xml += line.isEmpty() ? QByteArray("<a:p/>")
                              : "<a:p><a:r><a:rPr lang=\"en\"/><a:t>" + escaped(line) + "</a:t></a:r></a:p>";
    return xml;
}

// A box that takes the place which the layout has for this kind of text.
QByteArray textBox(int id, const QByteArray& name, const QByteArray& place, const QByteArray& frame,
                   const QString& text) {
    return "<p:sp><p:nvSpPr><p:cNvPr id=\"" + QByteArray::number(id) + "\" name=\"" + name +
           "\"/><p:cNvSpPr><a:spLocks noGrp=\"1\"/></p:cNvSpPr><p:nvPr><p:ph " + place +
           "/></p:nvPr></p:nvSpPr><p:spPr><a:xfrm>" + frame +
           "</a:xfrm><a:prstGeom prst=\"rect\"><a:avLst/></a:prstGeom></p:spPr><p:txBody><a:bodyPr>"
           "<a:normAutofit/></a:bodyPr><a:lstStyle/>" +
           drawingParagraphs(text) + "</p:txBody></p:sp>";
}

QByteArray shapes(const Section& section) {
    return QByteArray("<p:cSld><p:spTree>") + groupHead +
           textBox(2, "Title", "type=\"title\"", titleFrame, section.title) +
           textBox(3, "Text", "type=\"body\" idx=\"1\"", textFrame, section.text) + "</p:spTree></p:cSld>";
}

QByteArray spaces() {
    return OfficePackage::xmlns("drawingml", "a") + OfficePackage::relationXmlns() +
           OfficePackage::xmlns("presentationml", "p");
}

QByteArray textStyle(const QByteArray& name, const QByteArray& size, const QByteArray& weight) {
    return "<p:" + name + "><a:lvl1pPr><a:defRPr sz=\"" + size + "\" b=\"" + weight +
           "\"><a:solidFill><a:schemeClr val=\"tx1\"/></a:solidFill><a:latin typeface=\"+mn-lt\"/></a:defRPr>"
           "</a:lvl1pPr></p:" +
           name + '>';
}

constexpr char ownColours[] = "<p:clrMapOvr><a:masterClrMapping/></p:clrMapOvr>";

QByteArray master() {
    return "<p:sldMaster" + spaces() + '>' + shapes({QStringLiteral("Title"), QStringLiteral("Text")}) +
           "<p:clrMap bg1=\"lt1\" tx1=\"dk1\" bg2=\"lt2\" tx2=\"dk2\" accent1=\"accent1\" accent2=\"accent2\" "
           "accent3=\"accent3\" accent4=\"accent4\" accent5=\"accent5\" accent6=\"accent6\" hlink=\"hlink\" "
           "folHlink=\"folHlink\"/><p:sldLayoutIdLst><p:sldLayoutId id=\"2147483649\" r:id=\"rId1\"/>"
           "</p:sldLayoutIdLst><p:txStyles>" +
           textStyle("titleStyle", "3600", "1") + textStyle("bodyStyle", "2200", "0") +
           textStyle("otherStyle", "1800", "0") + "</p:txStyles></p:sldMaster>";
}

} // namespace

QByteArray officePresentation(const NativeContent& content) {
    OfficePackage package("ppt/presentation.xml");
    OfficePackage::Relations relations{{"slideMaster", "slideMasters/slideMaster1.xml"}};
    QByteArray slideList;
    for (qsizetype i = 0; i < content.sections.size(); ++i) {
        const QByteArray number = QByteArray::number(i + 1);
        relations.append({"slide", "slides/slide" + number + ".xml"});
        slideList += "<p:sldId id=\"" + QByteArray::number(256 + i) + "\" r:id=\"rId" +
                     QByteArray::number(relations.size()) + "\"/>";
        package.addPart("ppt/slides/slide" + number + ".xml", "presentationml.slide",
                        "<p:sld" + spaces() + '>' + shapes(content.sections[i]) + ownColours + "</p:sld>",
                        {{"slideLayout", "../slideLayouts/slideLayout1.xml"}});
    }
    relations.emplaceBack("theme", "theme/theme1.xml");
    package.addPart("ppt/presentation.xml", "presentationml.presentation.main",
                    "<p:presentation" + spaces() +
                        "><p:sldMasterIdLst><p:sldMasterId id=\"2147483648\" r:id=\"rId1\"/></p:sldMasterIdLst>" +
                        (slideList.isEmpty() ? QByteArray() : "<p:sldIdLst>" + slideList + "</p:sldIdLst>") +
                        slideSize + "</p:presentation>",
                    relations);
    package.addPart("ppt/slideMasters/slideMaster1.xml", "presentationml.slideMaster", master(),
                    {{"slideLayout", "../slideLayouts/slideLayout1.xml"}, {"theme", "../theme/theme1.xml"}});
    package.addPart("ppt/slideLayouts/slideLayout1.xml", "presentationml.slideLayout",
                    "<p:sldLayout" + spaces() + " type=\"obj\">" +
                        shapes({QStringLiteral("Title"), QStringLiteral("Text")}) + ownColours + "</p:sldLayout>",
                    {{"slideMaster", "../slideMasters/slideMaster1.xml"}});
    package.addPart("ppt/theme/theme1.xml", "theme", theme());
    return package.bytes();
}

} // namespace quenby::localdrive
