#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

namespace zav {

class UpdateModel;

// "Check for updates": runs the model's check as it is built, then shows the result and
// passes the buttons to the model.
class UpdateDialog : public QDialog {
public:
    explicit UpdateDialog(UpdateModel& model, QWidget* parent = nullptr);

private:
    void render();
    void after(void (UpdateModel::*handler)());

    UpdateModel& m_model;
    QLabel* m_message;
    QPushButton* m_kwupdater;
    QPushButton* m_support;
    QPushButton* m_exit;
};

} // namespace zav
