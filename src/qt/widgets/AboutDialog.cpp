#include "qt/widgets/AboutDialog.h"

#include "support/AboutModel.h"

#include <QFont>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace zav {
namespace {

QLabel* label(const char* name, const std::string& text, QWidget* parent) {
    // Captions break lines with a lone CR; a label wants LF.
    auto* l = new QLabel(QString::fromStdString(text).replace('\r', '\n'), parent);
    l->setObjectName(QString::fromLatin1(name));
    l->setWordWrap(true);
    return l;
}

} // namespace

AboutDialog::AboutDialog(AboutModel& model, QWidget* parent) : QDialog(parent), m_model(model) {
    m_model.open();
    setWindowTitle(QString::fromStdString(m_model.Caption));
    setModal(true);

    QLabel* title = label("lblTitle", m_model.titleText, this);
    QFont big = title->font();
    big.setPointSizeF(big.pointSizeF() * 1.8);
    big.setBold(true);
    title->setFont(big);
    auto* licence = new QPushButton(tr("&Licence"), this);
    licence->setObjectName(QStringLiteral("Licence"));
    auto* ok = new QPushButton(tr("OK"), this);
    ok->setObjectName(QStringLiteral("okButton"));
    ok->setDefault(true);
    connect(licence, &QPushButton::clicked, this, [this] { m_model.showLicence(); });
    connect(ok, &QPushButton::clicked, this, [this] {
        m_model.okPressed();
        if (m_model.CloseRequested)
            accept();
    });

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(licence);
    buttons->addStretch();
    buttons->addWidget(ok);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addWidget(label("lblVersion", m_model.versionText, this));
    layout->addWidget(label("lblDescription", m_model.descriptionText, this));
    layout->addWidget(label("lblNotice", m_model.noticeText, this));
    layout->addSpacing(12);
    layout->addWidget(label("lblDisclaimer", m_model.disclaimerText, this));
    layout->addLayout(buttons);
    setMinimumWidth(380);
}

} // namespace zav
