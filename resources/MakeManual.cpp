// Build-time tool: typesets the user manual from its HTML source into a PDF, so that the
// manual is made from text in the tree and never stored as a binary.
//   zav_make_manual manual.html ZAV.pdf
#include <QFile>
#include <QGuiApplication>
#include <QPageLayout>
#include <QPageSize>
#include <QPdfWriter>
#include <QTextDocument>

#include <cstdio>

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen"); // fonts only; no display needed
    QGuiApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: zav_make_manual SOURCE.html OUTPUT.pdf\n");
        return 2;
    }
    QFile source(QString::fromLocal8Bit(argv[1]));
    if (!source.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "zav_make_manual: cannot read %s\n", argv[1]);
        return 1;
    }
    QTextDocument document;
    document.setHtml(QString::fromUtf8(source.readAll()));

    // Written beside the target and renamed, so a failed run leaves no half manual.
    const QString target = QString::fromLocal8Bit(argv[2]);
    const QString part = target + QStringLiteral(".part");
    {
        QPdfWriter writer(part);
        writer.setTitle(QStringLiteral("ZAV user manual"));
        writer.setCreator(QStringLiteral("ZAV"));
        writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait,
                                         QMarginsF(20, 20, 20, 20), QPageLayout::Millimeter));
        writer.setResolution(300);
        document.print(&writer);
    }
    QFile::remove(target);
    if (QFile(part).size() == 0 || !QFile::rename(part, target)) {
        QFile::remove(part);
        std::fprintf(stderr, "zav_make_manual: cannot write %s\n", argv[2]);
        return 1;
    }
    return 0;
}
