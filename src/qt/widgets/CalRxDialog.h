#pragma once

#include <QDialog>

#include <array>

class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace zav {

class CalRxModel;

// "ZAV - Calibrate receiver": the source kind, its level, and the figures the model works out
// from them, shown again after every keystroke. Leaving the level box with a text that is not
// a number is refused and the focus stays in the box.
class CalRxDialog : public QDialog {
public:
    explicit CalRxDialog(CalRxModel& model, QWidget* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void render();
    void validateLevel();
    void apply();

    CalRxModel& m_model;
    std::array<QRadioButton*, 3> m_sources{};
    QLineEdit* m_level;
    QLabel* m_yFactor;
    QLabel* m_systemNf;
    QLabel* m_receiverNf;
    QLabel* m_noiseFloor;
    QLabel* m_status;
    QPushButton* m_apply;
    QPushButton* m_cancel;
    bool m_validating = false;
};

} // namespace zav
