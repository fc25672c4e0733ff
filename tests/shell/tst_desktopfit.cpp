// The windows on real desktops: small screens, scaled screens, a large font,
// a wide style, a dark palette. CTest runs this on several screens (see
// tests/CMakeLists.txt); each check holds on any of them.
#include "TestServices.h"

#include "exercise/AnswerLabel.h"
#include "exercise/ExercisePanel.h"
#include "exercise/FocusChain.h"
#include "midi/optionsform.h"
#include "shell/ArtworkLabel.h"
#include "shell/MDIForm1.h"
#include "shell/formabout.h"
#include "shell/frmSplash.h"

#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QTextLayout>
#include <QToolButton>

using namespace tonaro;

namespace {

constexpr std::array<int, 5> WidthsTwips{7275, 6585, 7065, 6705, 5655};

// The application font at a point size for as long as it lives (0: as it is).
struct FontSize {
    QFont before = QApplication::font();
    explicit FontSize(int points)
    {
        if (points > 0) {
            QFont font = before;
            font.setPointSize(points);
            QApplication::setFont(font);
        }
    }
    ~FontSize() { QApplication::setFont(before); }
};

struct Shell : test::TestServices {
    MDIForm1 window{services};
    explicit Shell(int exercise) : TestServices(false)
    {
        window.MDIForm_Load();
        if (exercise != 0)
            window.botton1_Click(exercise);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }
};

QRect available() { return QGuiApplication::primaryScreen()->availableGeometry(); }

// A caption shown whole: the widget has at least the room its text asks for.
bool whole(const QWidget *widget)
{
    const auto *label = qobject_cast<const QLabel *>(widget);
    if (label && (label->wordWrap() || label->text().isEmpty()))
        return true;
    const QSize need = label ? label->minimumSizeHint() : widget->sizeHint();
    return widget->width() >= need.width() && widget->height() >= need.height();
}

int brightest(const QImage &image, const QRect &area)
{
    const qreal ratio = image.devicePixelRatio();
    const QRect pixels = QRect(area.topLeft() * ratio, area.size() * ratio).intersected(image.rect());
    int most = 0;
    for (int y = pixels.top(); y <= pixels.bottom(); ++y)
        for (int x = pixels.left(); x <= pixels.right(); ++x)
            most = std::max(most, image.pixelColor(x, y).lightness());
    return most;
}

} // namespace

class DesktopFitTest : public QObject
{
    Q_OBJECT

private slots:
    void everyControlWholeAndReachable_data()
    {
        QTest::addColumn<int>("exercise");
        QTest::addColumn<int>("points");
        for (int points : {0, 14})
            for (int exercise = 0; exercise < 5; ++exercise)
                QTest::addRow("exercise %d, font %d", exercise, points) << exercise << points;
    }

    // The designed size where the screen holds it, never more than the screen;
    // whatever does not fit scrolls into view when it takes the focus.
    void everyControlWholeAndReachable()
    {
        QFETCH(int, exercise);
        QFETCH(int, points);
        const FontSize font(points);
        Shell s(exercise);
        const QRect frame = s.window.frameGeometry();
        QVERIFY2(available().contains(frame), qPrintable(QStringLiteral("%1,%2 %3x%4").arg(frame.x()).arg(frame.y()).arg(frame.width()).arg(frame.height())));
        const QSize designed(WidthsTwips[std::size_t(exercise)] / 15, 10050 / 15);
        const QSize margins = frame.size() - s.window.size();
        // The designed size is the size at the default font and style.
        if (points == 0 && QApplication::style()->name() == QLatin1String("fusion") && available().width() >= designed.width() + margins.width()
            && available().height() >= designed.height() + margins.height())
            QCOMPARE(s.window.size(), designed);

        for (QToolButton *button : s.window.findChildren<QToolButton *>()) {
            if (button->isVisibleTo(&s.window))
                QVERIFY2(whole(button), qPrintable(button->text()));
        }
        ExercisePanel *panel = s.window.exerciseWindow();
        auto *scroller = test::child<QScrollArea>(&s.window, QStringLiteral("exercisescroller"));
        const QRect view = scroller->viewport()->rect();
        for (QWidget *control : focuschain::controls(panel)) {
            if (!control->isVisibleTo(panel) || !control->isEnabled())
                continue;
            control->setFocus(Qt::TabFocusReason);
            QCoreApplication::processEvents();
            const QRect place(control->mapTo(scroller->viewport(), QPoint(0, 0)), control->size());
            QVERIFY2(view.contains(place), qPrintable(control->objectName()));
            if (control->objectName().startsWith(QLatin1String("play")))
                QVERIFY2(control->width() >= 24 && control->height() >= 24, qPrintable(control->objectName()));
        }
        for (QWidget *widget : panel->findChildren<QWidget *>())
            if (widget->isVisibleTo(panel) && (qobject_cast<QLabel *>(widget) || qobject_cast<QAbstractButton *>(widget)))
                QVERIFY2(whole(widget), qPrintable(widget->objectName()));
    }

    void settingsCaptionsBesideTheirLists_data()
    {
        QTest::addColumn<int>("points");
        QTest::newRow("default font") << 0;
        QTest::newRow("14 pt") << 14;
    }

    void settingsCaptionsBesideTheirLists()
    {
        QFETCH(int, points);
        const FontSize font(points);
        test::TestServices fx(false);
        optionsform dialog(fx.midi);
        for (QLabel *label : dialog.findChildren<QLabel *>()) {
            QVERIFY2(whole(label), qPrintable(label->objectName()));
            for (QWidget *other : dialog.findChildren<QWidget *>())
                if (other != label && !qobject_cast<QLabel *>(other) && other->parentWidget() == &dialog)
                    QVERIFY2(!label->geometry().intersects(other->geometry()),
                             qPrintable(label->objectName() + QStringLiteral(" over ") + other->objectName()));
        }
    }

    // Reveal of ten notes wraps between names, never inside "G #"; a screen
    // reader still reads the names as written.
    void revealNeverBreaksInsideANoteName()
    {
        Shell s(0);
        auto *answer = test::child<AnswerLabel>(&s.window, QStringLiteral("showlabel"));
        const QString names = QStringLiteral("C # D # F # G # A# C # D # F # G # A# ");
        answer->setText(names);
        QCOMPARE(answer->text(), names);
        for (int width : {30, 45, 70, 110}) {
            QTextLayout layout(answer->shownText(), answer->font());
            layout.setTextOption(QTextOption(Qt::AlignCenter));
            layout.beginLayout();
            for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
                line.setLineWidth(width);
                QVERIFY2(answer->shownText().at(line.textStart()) != u'#', qPrintable(QString::number(width)));
            }
            layout.endLayout();
        }
    }

    void opensInTheCentre()
    {
        Shell s(0);
        const QRect frame = s.window.frameGeometry();
        if (frame.width() < available().width() && frame.height() < available().height())
            QVERIFY((frame.center() - available().center()).manhattanLength() <= 2);
        else
            QVERIFY(available().contains(frame));
    }

    void picturesOfTheirSizes()
    {
        frmSplash splash;
        QCOMPARE(test::child<ArtworkLabel>(&splash, QString())->size(), QSize(353, 175));
        formabout about;
        QCOMPARE(about.findChild<ArtworkLabel *>()->size(), QSize(355, 135));
    }

    // All five look raised at rest; only Intervals lights up under the mouse.
    void onlyIntervalsHasAHoverHighlight()
    {
        Shell s(0);
        for (int index = 0; index < 5; ++index) {
            auto *button = test::child<QToolButton>(&s.window, QStringLiteral("botton1_%1").arg(index));
            QVERIFY(!button->autoRaise());
            const QImage rest = button->grab().toImage();
            button->setAttribute(Qt::WA_UnderMouse, true);
            const QImage hover = button->grab().toImage();
            button->setAttribute(Qt::WA_UnderMouse, false);
            QCOMPARE(rest != hover, index == 1);
        }
    }

    // On a dark palette the staff of a bar picture and the ▶ of an answer
    // button are drawn light, not dark on dark.
    void picturesClearOnADarkPalette()
    {
        const QPalette before = QApplication::palette();
        QPalette dark(QColor(45, 45, 48), QColor(30, 30, 32));
        dark.setColor(QPalette::ButtonText, QColor(240, 240, 240));
        dark.setColor(QPalette::WindowText, QColor(240, 240, 240));
        dark.setColor(QPalette::Text, QColor(240, 240, 240));
        QApplication::setPalette(dark);
        {
            Shell s(1);
            auto *bar = test::child<QToolButton>(&s.window, QStringLiteral("botton1_0"));
            const QSize icon = bar->iconSize();
            const QRect picture((bar->width() - icon.width()) / 2 + 4, 6, icon.width() - 8, icon.height() - 8);
            QVERIFY(brightest(bar->grab().toImage(), picture) > 170);
            auto *play = test::child<QPushButton>(&s.window, QStringLiteral("playint_0"));
            const QImage face = play->grab().toImage();
            QVERIFY(brightest(face, face.rect().adjusted(6, 6, -6, -6)) > 170);
        }
        QApplication::setPalette(before);
    }
};

QTEST_MAIN(DesktopFitTest)
#include "tst_desktopfit.moc"
