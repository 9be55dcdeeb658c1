#pragma once

#include <QDialog>

namespace zav {

class AboutModel;

// The about box: title, version, disclaimer and the maker's lines from the model, a button
// that opens the licence text and one that closes the box.
class AboutDialog : public QDialog {
public:
    explicit AboutDialog(AboutModel& model, QWidget* parent = nullptr);

private:
    AboutModel& m_model;
};

} // namespace zav
