#include "qt/services/QtMailer.h"

#include <QByteArray>
#include <QDesktopServices>
#include <QUrl>

namespace zav {

QUrl MailtoUrl(const MailMessage& message) {
    QByteArray text = "mailto:" + QUrl::toPercentEncoding(QString::fromStdString(message.to), "@");
    text += "?subject=" + QUrl::toPercentEncoding(QString::fromStdString(message.subject));
    text += "&body=" + QUrl::toPercentEncoding(QString::fromStdString(message.body));
    return QUrl::fromEncoded(text, QUrl::StrictMode);
}

QtMailer::QtMailer(Opener opener) : m_opener(std::move(opener)) {
    if (!m_opener)
        m_opener = [](const QUrl& url) { return QDesktopServices::openUrl(url); };
}

bool QtMailer::Send(const MailMessage& message) {
    const QUrl url = MailtoUrl(message);
    return url.isValid() && m_opener(url);
}

} // namespace zav
