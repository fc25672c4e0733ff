#pragma once

#include <QDialog>

class QComboBox;
class QLabel;
class QPushButton;
class QSlider;

namespace tonaro {

class Midi_interface;

// The sound settings dialog. It shows the shared device, channel, velocity
// and instrument when it loads, and writes them back and restarts the port
// however it is closed (OK, Enter, Escape, the close box): there is no
// Cancel. The main window shows it modally:
//     optionsform dialog(midi, this);
//     dialog.exec();
class optionsform : public QDialog
{
    Q_OBJECT

public:
    explicit optionsform(Midi_interface &midi, QWidget *parent = nullptr);

    // Fills Combodevice with the output ports' names in device-id order, so
    // that a list position is the device id handed to the port.
    void GetOutDevs();

    // Every way of closing ends here; the settings are applied once per closing.
    void done(int result) override;

protected:
    void showEvent(QShowEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void createControls();
    void placeControls();
    void Form_Load();
    void Form_Unload();
    void Command1_Click();
    void volumeslider_Change(int value);

    Midi_interface &m_midi;
    // Set by Form_Load, cleared by Form_Unload: a dialog shown again after a
    // closing loads afresh, as a newly created one would.
    bool m_loaded = false;

    QComboBox *Combodevice = nullptr;
    QComboBox *Combochannel = nullptr;
    QSlider *volumeslider = nullptr;
    QLabel *volumesliderlabel = nullptr;
    QComboBox *comboinstr = nullptr;
    QPushButton *Command1 = nullptr;
};

} // namespace tonaro
