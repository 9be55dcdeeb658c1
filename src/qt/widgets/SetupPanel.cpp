#include "qt/widgets/SetupPanel.h"

#include "app/MainModel.h"
#include "config/SetupRecord.h"
#include "config/ToolTips.h"

#include <QApplication>

#include <QComboBox>
#include <QEvent>
#include <QFocusEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTimer>

namespace zav {
namespace {

QString qs(const std::string& s) {
    return QString::fromStdString(s);
}

} // namespace

SetupPanel::SetupPanel(MainModel& model, std::function<void()> changed, QWidget* parent)
    : QWidget(parent), m_model(model), m_changed(std::move(changed)) {
    auto* grid = new QGridLayout(this);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(6);

    auto line = [this](SetupField f) {
        auto* edit = new QLineEdit(this);
        if (IsNumericField(f)) { // numbers: narrow, right-aligned
            edit->setAlignment(Qt::AlignRight);
            edit->setMaximumWidth(130);
        }
        QObject::connect(edit, &QLineEdit::textEdited, this, [this, f](const QString& text) {
            FieldText(m_model.setup, f) = text.toStdString();
        });
        return edit;
    };
    // Two columns: who, where and the receiver on the left; antenna, losses and timing right.
    // The boxes are made in the record's order of entry, which is the order Tab walks.
    int row = 0;
    addRow(grid, row++, 0, SetupField::Tester, "&Tester", line(SetupField::Tester));
    addRow(grid, row++, 0, SetupField::Location, "Location", line(SetupField::Location));
    addRow(grid, row++, 0, SetupField::lat, "Lat&itude", line(SetupField::lat));
    addRow(grid, row++, 0, SetupField::lon, "Lon&gitude", line(SetupField::lon));
    m_environment = new QComboBox(this);
    for (const char* e : kEnvironments)
        m_environment->addItem(e);
    m_environment->setCurrentIndex(-1); // nothing chosen until a profile says so
    QObject::connect(
        m_environment, &QComboBox::currentTextChanged, this,
        [this](const QString& text) { m_model.setup.Environment = text.toStdString(); });
    addRow(grid, row++, 0, SetupField::Environment, "&Environment", m_environment);
    addRow(grid, row++, 0, SetupField::Frequency, "Frequenc&y (MHz)", line(SetupField::Frequency));
    addRow(grid, row++, 0, SetupField::Receiver, "Receiver", line(SetupField::Receiver));
    addRow(grid, row++, 0, SetupField::Bandwidth, "Rx bandwidth (Hz)", line(SetupField::Bandwidth));
    addRow(grid, row++, 0, SetupField::RxNF, "&Rx Noise Figure (dB)", line(SetupField::RxNF));
    row = 0;
    addRow(grid, row++, 2, SetupField::Antenna, "Antenna", line(SetupField::Antenna));
    addRow(grid, row++, 2, SetupField::AntGain, "", line(SetupField::AntGain));
    addRow(grid, row++, 2, SetupField::Feedline, "Feedline", line(SetupField::Feedline));
    addRow(grid, row++, 2, SetupField::Loss, "&Loss (dB)", line(SetupField::Loss));
    addRow(grid, row++, 2, SetupField::Attenuator, "&Attenuator (dB)",
           line(SetupField::Attenuator));
    addRow(grid, row++, 2, SetupField::AGC, "AGC Threshold (dB)", line(SetupField::AGC));
    addRow(grid, row++, 2, SetupField::Interval, "", line(SetupField::Interval));
    m_notes = new QPlainTextEdit(this);
    m_notes->setTabChangesFocus(true);
    m_notes->setMinimumHeight(70);
    m_notes->setMaximumHeight(110);
    QObject::connect(m_notes, &QPlainTextEdit::textChanged, this, [this] {
        // Line ends are CR LF in every output, as the operator's notes always were.
        m_model.setup.Notes = m_notes->toPlainText().replace("\n", "\r\n").toStdString();
    });
    addRow(grid, row, 2, SetupField::Notes, "&Notes", m_notes, 3);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    grid->setColumnMinimumWidth(2, 20);

    m_antGainLabel = static_cast<QLabel*>(grid->itemAtPosition(1, 2)->widget());
    m_intervalLabel = static_cast<QLabel*>(grid->itemAtPosition(6, 2)->widget());
    // A double click on these two labels flips their option.
    m_antGainLabel->installEventFilter(this);
    m_intervalLabel->installEventFilter(this);
    refresh();
}

void SetupPanel::addRow(QGridLayout* grid, int row, int column, SetupField field,
                        const QString& caption, QWidget* editor, int rowSpan) {
    auto* label = new QLabel(caption, this);
    label->setBuddy(editor);
    m_labels[static_cast<int>(field)] = label;
    grid->addWidget(label, row, column, rowSpan > 1 ? Qt::AlignTop : Qt::Alignment());
    grid->addWidget(editor, row, column + 1, rowSpan, 1);
    editor->setObjectName(QString("field%1").arg(static_cast<int>(field)));
    editor->installEventFilter(this);
    m_editors[static_cast<int>(field)] = editor;
}

QWidget* SetupPanel::fieldWidget(SetupField field) const {
    return m_editors[static_cast<int>(field)];
}

int SetupPanel::fieldOf(QObject* watched) const {
    for (int i = 0; i < kSetupFieldCount; ++i)
        if (m_editors[i] == watched)
            return i;
    return -1;
}

bool SetupPanel::validateFocused() {
    const int index = fieldOf(QApplication::focusWidget());
    if (index < 0)
        return true;
    return validate(static_cast<SetupField>(index));
}

bool SetupPanel::validate(SetupField field) {
    bool cancel = false;
    m_validating = true;
    m_model.form.fieldLeft(field, cancel);
    m_validating = false;
    if (cancel) {
        // A refused value keeps the focus, as the operator must correct it first.
        QWidget* editor = fieldWidget(field);
        QTimer::singleShot(0, editor, [editor] { editor->setFocus(Qt::OtherFocusReason); });
    }
    m_changed();
    return !cancel;
}

bool SetupPanel::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonDblClick) {
        if (watched == m_antGainLabel) {
            m_model.optionsMenu.antGainLabelDoubleClicked();
            m_changed();
            return true;
        }
        if (watched == m_intervalLabel) {
            m_model.optionsMenu.intervalLabelDoubleClicked();
            m_changed();
            return true;
        }
        if (watched == m_notes) {
            m_model.outputs.copyNotes();
            return false;
        }
    }
    const int index = fieldOf(watched);
    if (index < 0)
        return QWidget::eventFilter(watched, event);
    const auto field = static_cast<SetupField>(index);
    auto* edit = qobject_cast<QLineEdit*>(watched);

    if (event->type() == QEvent::FocusIn && edit) {
        m_model.form.fieldFocused(field);
        const TextSelection sel = m_model.form.Selection(field);
        // The model's selection is in characters of the box's text.
        QTimer::singleShot(0, edit,
                           [edit, sel] { edit->setSelection(sel.SelStart, sel.SelLength); });
    } else if (event->type() == QEvent::FocusIn && watched == m_notes) {
        QTimer::singleShot(0, m_notes, [this] { m_notes->selectAll(); });
    } else if (event->type() == QEvent::FocusOut && !m_validating) {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        // Menus and other windows do not take the value away from the box.
        if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason)
            validate(field);
    } else if (event->type() == QEvent::KeyPress && edit) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            const KeyOutcome outcome = m_model.form.keyPressed(field, Key::Enter);
            m_changed();
            const TextSelection sel = m_model.form.Selection(field);
            edit->setSelection(sel.SelStart, sel.SelLength);
            return outcome == KeyOutcome::Swallowed;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void SetupPanel::refresh() {
    for (int i = 0; i < kSetupFieldCount; ++i) {
        const auto field = static_cast<SetupField>(i);
        const QString text = qs(FieldText(m_model.setup, field));
        if (auto* edit = qobject_cast<QLineEdit*>(m_editors[i]); edit && edit->text() != text)
            edit->setText(text);
    }
    const QString env = qs(m_model.setup.Environment);
    const int envIndex = m_environment->findText(env, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (envIndex >= 0 && m_environment->currentIndex() != envIndex)
        m_environment->setCurrentIndex(envIndex);
    const QString notes = qs(m_model.setup.Notes).replace("\r\n", "\n");
    if (m_notes->toPlainText() != notes)
        m_notes->setPlainText(notes);
    m_antGainLabel->setText(qs(m_model.controls.antGainLabel));
    m_intervalLabel->setText(qs(m_model.controls.intervalLabel));
    for (int i = 0; i < kSetupFieldCount; ++i) {
        const QString tip = qs(SetupFieldTip(static_cast<SetupField>(i), m_model.options.AntFact,
                                             m_model.options.Samples));
        m_editors[i]->setToolTip(tip);
        m_labels[i]->setToolTip(tip);
        // The caption names the box for a screen reader, without its access key.
        m_editors[i]->setAccessibleName(m_labels[i]->text().remove('&'));
    }
    fieldWidget(SetupField::AntGain)->setEnabled(m_model.controls.AntGainEnabled);
}

} // namespace zav
