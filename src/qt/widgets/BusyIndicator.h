#pragma once

class QString;
class QWidget;

namespace zav {

class QtHttpClient;

// While `client` waits for a server (longer than a moment), a modal busy window over `parent`
// says `text`; its Cancel ends the request, which then counts as failed. The window goes when
// the wait ends.
void ShowBusyWhileWaiting(QtHttpClient& client, QWidget* parent, const QString& text);

} // namespace zav
