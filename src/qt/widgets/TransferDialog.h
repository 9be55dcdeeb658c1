#pragma once

#include <QDialog>

class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace zav {

class TransferModel;

// "ZAV - Transfer results": shows the transfer model and passes the operator's actions to
// it. Loads the model when built; writes the fields back however the dialog is closed.
class TransferDialog : public QDialog {
public:
    explicit TransferDialog(TransferModel& model, QWidget* parent = nullptr);

    void done(int result) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void render();
    void after(void (TransferModel::*handler)());

    TransferModel& m_model;
    QLineEdit* m_username;
    QLineEdit* m_password;
    QLineEdit* m_email;
    QLineEdit* m_url;
    QLineEdit* m_atfEmail;
    QRadioButton* m_online;
    QRadioButton* m_byEmail;
    QPlainTextEdit* m_message;
    QPushButton* m_ok;
    QPushButton* m_cancel;
    bool m_unloaded = false;
    bool m_okPressed = false; // an OK press is being handled
};

} // namespace zav
