#include "MDIForm1.h"

#include "exercise/ExercisePanel.h"
#include "exercise/WaitMs.h"
#include "exercises/ExerciseRegistry.h"
#include "BarButton.h"
#include "ExerciseScrollArea.h"
#include "formabout.h"
#include "frmSplash.h"
#include "MenuBarKeys.h"
#include "MessageBoxes.h"
#include "midi/Midi_interface.h"
#include "midi/optionsform.h"
#include "Twips.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QScreen>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>
#include <QWindow>
#include <algorithm>

static void initShellResources()
{
    Q_INIT_RESOURCE(shell);
}

namespace tonaro {

namespace {

constexpr int BarHeightTwips = 1215;
constexpr int ButtonSizeTwips = 1095;
constexpr int ButtonStepTwips = 1080;
constexpr int SplashMilliseconds = 1500;
constexpr int IntervalsButton = 1; // the one button with a hover highlight

} // namespace

MDIForm1::MDIForm1(const Services &services, QWidget *parent)
    : QMainWindow(parent)
    , m_services(services)
{
    initShellResources();
    setObjectName(QStringLiteral("MDIForm1"));
    setWindowTitle(Title);
    setWindowIcon(QIcon(QStringLiteral(":/icons/tonaro.svg")));

    m_mdiArea = new QMdiArea(this);
    m_mdiArea->setObjectName(QStringLiteral("mdiarea"));
    m_mdiArea->setBackground(palette().brush(QPalette::Dark));
    setCentralWidget(m_mdiArea);

    createBar();
    createMenus();
    resize(fittedSize(exerciseEntries()[0].mainWindowWidthTwips));
    m_services.midi.setDialogParent(this);
}

MDIForm1::~MDIForm1()
{
    unloadExercise();
}

void MDIForm1::createBar()
{
    auto *bar = new QToolBar(tr("Exercises"), this);
    bar->setObjectName(QStringLiteral("exercisebar"));
    bar->setMovable(false);
    bar->setFloatable(false);
    bar->setContentsMargins(0, 0, 0, 0);
    const int designedSize = twipsToPixels(ButtonSizeTwips);
    const int overlap = designedSize - twipsToPixels(ButtonStepTwips);
    const auto &entries = exerciseEntries();
    // The buttons sit at their fixed step on one strip, so that the bar's
    // own spacing never pushes the last one out of a narrow window.
    auto *strip = new QWidget(bar);
    strip->setObjectName(QStringLiteral("exercisestrip"));
    for (int index = 0; index < int(entries.size()); ++index) {
        auto *button = new BarButton(index == IntervalsButton, strip);
        button->setObjectName(QStringLiteral("botton1_%1").arg(index));
        button->setText(tr(entries[index].caption));
        button->setPicture(QString::fromLatin1(entries[index].icon));
        // Room for the caption below the picture.
        button->setIconSize(QSize(designedSize - 26, designedSize - 26));
        button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        button->setCheckable(true);
        button->setChecked(index == 0);
        button->setToolTip(tr("%1 exercise").arg(button->text()));
        // The state, not the click: an accessibility tool's toggle presses or
        // releases the button without a click, and must switch all the same.
        connect(button, &QToolButton::toggled, this, [this, index](bool pressed) {
            if (pressed != (index == CurrentExercise))
                botton1_Click(index);
        });
        m_buttons[std::size_t(index)] = button;
    }
    // Square buttons of the designed size, larger where a large font or a
    // wide style needs more room for the longest caption.
    QSize size(designedSize, designedSize);
    for (const QToolButton *button : m_buttons)
        size = size.expandedTo(button->sizeHint());
    const int step = size.width() - overlap;
    for (int index = 0; index < int(m_buttons.size()); ++index)
        m_buttons[std::size_t(index)]->setGeometry(index * step, 0, size.width(), size.height());
    strip->setFixedSize(step * (int(m_buttons.size()) - 1) + size.width(), size.height());
    bar->setFixedHeight(twipsToPixels(BarHeightTwips) - designedSize + size.height());
    bar->addWidget(strip);
    addToolBar(Qt::TopToolBarArea, bar);
    m_bar = bar;
}

void MDIForm1::createMenus()
{
    // No mnemonics: in note recognition Alt with a letter answers that
    // letter. Alt pressed alone reaches the entries instead.
    auto *keys = new MenuBarKeys;
    keys->setParent(menuBar());
    menuBar()->setStyle(keys);
    QAction *options = menuBar()->addAction(tr("Options"));
    options->setObjectName(QStringLiteral("optionmnu"));
    connect(options, &QAction::triggered, this, &MDIForm1::optionmnu_Click);
    QAction *about = menuBar()->addAction(tr("About"));
    about->setObjectName(QStringLiteral("aboutmnu"));
    connect(about, &QAction::triggered, this, &MDIForm1::aboutmnu_Click);

    // After its dialog has closed, the menu bar gives the focus back to the
    // control that had it before the menu was entered, so that the letter
    // keys and Tab go on from there.
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) {
        if (now && now != menuBar() && isAncestorOf(now))
            m_focusBeforeMenu = now;
    });
    connect(menuBar(), &QMenuBar::triggered, this, [this] {
        if (m_focusBeforeMenu)
            m_focusBeforeMenu->setFocus(Qt::OtherFocusReason);
    });
}

void MDIForm1::MDIForm_Load()
{
    auto *splash = new frmSplash;
    splash->show();
    WaitMs(SplashMilliseconds, true);
    placeOnScreen(true);
    show();
    delete splash;
    InitMidi();
    showExercise(0);
    // The window opens in the centre of the screen, at the size its first
    // exercise needs.
    resize(fittedSize(exerciseEntries()[0].mainWindowWidthTwips));
    placeOnScreen(true);
}

void MDIForm1::InitMidi()
{
    Midi_interface &midi = m_services.midi;
    midi.MidiDeviceId = 0;
    midi.MidiInstrument = 24;
    midi.MidiVolume = 100;
    midi.MidiChannel = 1;
    midi.MidiPortOpen = false;
    CurrentExercise = 0;
    midi.ToggleMidiOut();
    midi.SelectInstrument(midi.MidiChannel, midi.MidiInstrument, 0, 0);
}

void MDIForm1::botton1_Click(int index)
{
    if (index == CurrentExercise) {
        // Its toggle has just released the pressed button: press it again and
        // leave the exercise, its question and its score alone.
        const QSignalBlocker quiet(m_buttons[std::size_t(index)]);
        m_buttons[std::size_t(index)]->setChecked(true);
        return;
    }
    {
        const QSignalBlocker quietOld(m_buttons[std::size_t(CurrentExercise)]);
        const QSignalBlocker quietNew(m_buttons[std::size_t(index)]);
        m_buttons[std::size_t(CurrentExercise)]->setChecked(false);
        m_buttons[std::size_t(index)]->setChecked(true);
    }
    CurrentExercise = std::int16_t(index);
    showExercise(index);
    resize(fittedSize(exerciseEntries()[std::size_t(index)].mainWindowWidthTwips));
    placeOnScreen(false);
}

QSize MDIForm1::fittedSize(int widthTwips) const
{
    QSize size(twipsToPixels(widthTwips), twipsToPixels(HeightTwips));
    if (m_exercise) {
        // Above and beside the exercise: the menu, the bar, the area's frame.
        const int frame = 2 * m_mdiArea->frameWidth();
        const QSize around(frame, menuBar()->sizeHint().height() + m_bar->height() + frame);
        size = size.expandedTo(m_exercise->minimumSizeHint() + around);
    }
    size = size.expandedTo(minimumSizeHint());
    const QMargins frame = frameAround();
    const QSize available = screen()->availableGeometry().size()
        - QSize(frame.left() + frame.right(), frame.top() + frame.bottom());
    return size.boundedTo(available);
}

QMargins MDIForm1::frameAround() const
{
    const QMargins known = windowHandle() ? windowHandle()->frameMargins() : QMargins();
    if (!known.isNull() || QGuiApplication::platformName() == QLatin1String("offscreen"))
        return known;
    // Some window managers never say how large their frame is, and none
    // has said before the window is shown: a title bar and thin borders are
    // then assumed, on the generous side, so that a window as tall as the
    // screen keeps its title bar and its bottom edge in view.
    const int border = 2 * style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth, nullptr, this);
    return {border, style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, this) + border, border, border};
}

void MDIForm1::placeOnScreen(bool centre)
{
    const QRect area = screen()->availableGeometry();
    const QMargins frame = frameAround();
    QRect outer(pos(), size().grownBy(frame));
    if (centre)
        outer.moveCenter(area.center());
    // Wholly on the screen, the title bar first where it cannot all fit.
    outer.moveLeft(std::max(area.left(), std::min(outer.left(), area.right() + 1 - outer.width())));
    outer.moveTop(std::max(area.top(), std::min(outer.top(), area.bottom() + 1 - outer.height())));
    // A shown window whose frame the toolkit does not know is placed by its
    // inside, and the frame goes around that; before it is shown, by its frame.
    const bool placedByInside = testAttribute(Qt::WA_WState_Created) && windowHandle()->frameMargins().isNull();
    move(placedByInside ? outer.topLeft() + QPoint(frame.left(), frame.top()) : outer.topLeft());
}

void MDIForm1::showExercise(int index)
{
    // Loading an exercise window unloads the other one: its question and
    // score are gone, and a handler of it that is still waiting gives up.
    unloadExercise();
    const ExerciseEntry &entry = exerciseEntries()[std::size_t(index)];
    m_exercise = entry.create(m_services, nullptr);
    m_subWindow = m_mdiArea->addSubWindow(new ExerciseScrollArea(m_exercise), Qt::SubWindow | Qt::FramelessWindowHint);
    m_subWindow->setObjectName(QStringLiteral("subwindow"));
    m_subWindow->setWindowTitle(m_exercise->windowTitle());
    m_subWindow->showMaximized();
    m_exercise->Form_Load();
    connect(m_exercise, &ExercisePanel::focusLeaving, this, [this](bool forward) {
        // Past the window's last control Tab comes round to the top of the
        // main window, the bar; Shift+Tab from its first control goes up to
        // the bar's last button.
        if (forward)
            m_buttons.front()->setFocus(Qt::TabFocusReason);
        else
            m_buttons.back()->setFocus(Qt::BacktabFocusReason);
    });
    m_exercise->focusStartControl();
}

void MDIForm1::unloadExercise()
{
    if (m_exercise)
        m_exercise->unload();
    if (m_subWindow) {
        m_mdiArea->removeSubWindow(m_subWindow);
        m_subWindow->hide();
        // Deferred: the window may be the one whose click handler is running.
        m_subWindow->deleteLater();
    }
    m_exercise = nullptr;
    m_subWindow = nullptr;
}

void MDIForm1::optionmnu_Click()
{
    optionsform dialog(m_services.midi, this);
    dialog.exec();
}

void MDIForm1::aboutmnu_Click()
{
    formabout about(this);
    about.exec();
}

bool MDIForm1::focusNextPrevChild(bool next)
{
    QWidget *edge = next ? m_buttons.back() : m_buttons.front();
    if (m_exercise && QApplication::focusWidget() == edge) {
        m_exercise->enterFocus(next);
        return true;
    }
    return QMainWindow::focusNextPrevChild(next);
}

void MDIForm1::closeEvent(QCloseEvent *event)
{
    if (!m_services.boxes.question(this, Title, tr("Exit from Tonaro 1.2?"))) {
        event->ignore();
        return;
    }
    m_services.midi.ToggleMidiOut();
    unloadExercise();
    abandonWaits();
    event->accept();
}

} // namespace tonaro
