#pragma once

#include "config/SetupField.h"

#include <QWidget>

#include <array>
#include <functional>

class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace zav {

class MainModel;

// The set-up record's boxes. Typing goes straight into the model; leaving a box or pressing
// Enter runs the model's checks, and a refused value takes the focus back to its box.
class SetupPanel : public QWidget {
public:
    SetupPanel(MainModel& model, std::function<void()> changed, QWidget* parent = nullptr);

    // Shows the model's texts, captions and enabled states.
    void refresh();
    QWidget* fieldWidget(SetupField field) const;
    // Checks the box that has the focus, as leaving it would; false when its value is refused
    // (the message is shown and the focus stays).
    bool validateFocused();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void addRow(QGridLayout* grid, int row, int column, SetupField field, const QString& caption,
                QWidget* editor, int rowSpan = 1);
    int fieldOf(QObject* watched) const;
    bool validate(SetupField field);

    MainModel& m_model;
    std::function<void()> m_changed;
    std::array<QWidget*, kSetupFieldCount> m_editors{};
    std::array<QLabel*, kSetupFieldCount> m_labels{};
    QLabel* m_antGainLabel = nullptr;
    QLabel* m_intervalLabel = nullptr;
    QComboBox* m_environment = nullptr;
    QPlainTextEdit* m_notes = nullptr;
    bool m_validating = false;
};

} // namespace zav
