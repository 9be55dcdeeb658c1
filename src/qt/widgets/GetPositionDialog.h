#pragma once

#include <QDialog>

#include <memory>

class QLabel;
class QLineEdit;
class QPushButton;
class QTimer;

namespace zav {

class Beeper;
class GetPositionModel;
class SerialPort;
struct GpsSettings;
struct SetupRecord;

// "Get Position": opens the receiver's serial port as it is created, shows each line that
// arrives and the position averaged so far, and closes by itself once the wanted accuracy is
// reached. Every way of closing it (OK, Cancel, Esc, the window's close button, the automatic
// close, destruction) releases the port.
class GetPositionDialog : public QDialog {
public:
    // `beepOption` is the main window's Beep option; numbers are shown with
    // `decimalSeparator`.
    GetPositionDialog(const GpsSettings& settings, SerialPort& port, Beeper& beeper,
                      bool beepOption, char decimalSeparator = '.', QWidget* parent = nullptr);
    ~GetPositionDialog() override;

    const GetPositionModel& model() const { return *m_model; }

    // Captures a position on the receiver named by `settings`, modally; on OK the averaged
    // latitude and longitude go into `setup`, otherwise it is left as it is.
    static void Capture(SetupRecord& setup, const GpsSettings& settings, Beeper& beeper,
                        bool beepOption, char decimalSeparator, QWidget* parent = nullptr);

    void accept() override;
    void reject() override;

private:
    class WatchedPort;

    void render();
    void tick();

    // Declared before the model, which lets go of the port's handlers when it goes.
    std::unique_ptr<WatchedPort> m_port;
    std::unique_ptr<GetPositionModel> m_model;
    QLineEdit* m_hdop;
    QLineEdit* m_record;
    QLineEdit* m_latl;
    QLineEdit* m_lonl;
    QLabel* m_fixText;
    QLineEdit* m_acc;
    QLineEdit* m_ct;
    QLineEdit* m_lat;
    QLineEdit* m_lon;
    QPushButton* m_ok;
    QPushButton* m_cancel;
    QTimer* m_tickTimer;
};

} // namespace zav
