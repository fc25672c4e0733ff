#pragma once

#include "exercise/ExercisePanel.h"
#include "exercise/Services.h"

#include <QMainWindow>
#include <QPointer>
#include <array>
#include <cstdint>

class QMdiArea;
class QMdiSubWindow;
class QToolButton;

namespace tonaro {


// The main window: a bar of five exercise buttons over a multiple-document
// area that shows one exercise window at a time, the Options and About
// menu entries, the start-up and the exit question.
class MDIForm1 : public QMainWindow
{
    Q_OBJECT

public:
    static constexpr int HeightTwips = 10050;
    static inline const QString Title = QStringLiteral("Tonaro 1.2");

    explicit MDIForm1(const Services &services, QWidget *parent = nullptr);
    ~MDIForm1() override;

    // The index of the pressed bar button, the exercise shown last from the bar.
    std::int16_t CurrentExercise = 0;

    // Start-up: splash, main window, MIDI port, note recognition.
    void MDIForm_Load();
    void InitMidi();
    void botton1_Click(int index);
    void optionmnu_Click();
    void aboutmnu_Click();

    ExercisePanel *exerciseWindow() const { return m_exercise; }

protected:
    // MDIForm_Unload: the exit question comes before anything is closed.
    void closeEvent(QCloseEvent *event) override;
    // Tab runs from the bar into the exercise window and back out to the
    // bar, which an MDI child window would otherwise never let it do.
    bool focusNextPrevChild(bool next) override;

private:
    void createBar();
    void createMenus();
    void showExercise(int index);
    void unloadExercise();
    // The designed size for an exercise of this width, grown where its
    // controls need more room, shrunk to the screen's available area.
    QSize fittedSize(int widthTwips) const;
    // The window manager's frame around the window, as far as it is known.
    QMargins frameAround() const;
    // Moves the window wholly onto its screen, into the centre if asked.
    void placeOnScreen(bool centre);

    Services m_services;
    QMdiArea *m_mdiArea;
    QWidget *m_bar = nullptr;
    std::array<QToolButton *, 5> m_buttons{};
    QPointer<ExercisePanel> m_exercise;
    QPointer<QMdiSubWindow> m_subWindow;
    QPointer<QWidget> m_focusBeforeMenu;
};

} // namespace tonaro
