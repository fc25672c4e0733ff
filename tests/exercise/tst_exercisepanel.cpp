#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "exercise/WaitMs.h"
#include "exercises/formmelody/PianoKeyboard.h"

#include <QComboBox>
#include <QLineEdit>
#include <QSlider>

// The panel the five exercise windows share, and where the windows differ
// in it: one table, a row per window. Scripted draws run out at once, so
// every question is the first ticked entry (note recognition: the note 48,
// a C).

using namespace tonaro;
using Ints = QList<int>;

namespace {

struct Panel : test::Loaded<ExercisePanel> {
    explicit Panel(const QString &name) : Loaded(name) {}
    // The answer button of entry (or key) index.
    QString answerButton(int index) const
    {
        const QString prefix = w->objectName() == "formmelody" ? "tasto_" : w->objectName() == "formintervalli" ? "playint_"
                             : w->objectName() == "Formscales" ? "playscale_" : "playchord_";
        return prefix + QString::number(index);
    }
    void answer(bool right) { press(answerButton(right ? 0 : 1)); }
    QSlider *gapSlider() const { return w->findChildren<QSlider *>(QRegularExpression("^slider(multinotes|intervals)$")).value(0); }
    // The notes sent since the last look.
    Ints take()
    {
        const Ints notes = played();
        clearRecords();
        return notes;
    }
    // A slider's value and its label's.
    QString slider(const QString &name) const { return QStringLiteral("%1 %2").arg(get<QSlider>(name)->value()).arg(text(name + "label")); }
    QString verdict() const { return text("rightwronglabel") + ' ' + get("rightwronglabel")->palette().color(QPalette::WindowText).name(); }
};

} // namespace

class tst_exercisepanel : public QObject
{
    Q_OBJECT

private slots:
    // Each window through practice, then test mode. The practice root is
    // the list's (not brought down) before any question and the question's
    // after one, whatever the list shows then (item 1, harmony 0); Repeat
    // plays the question, except in harmony, where a practice click makes
    // the clicked degree the current chord.
    void whereTheWindowsDiffer()
    {
        const struct Row {
            const char *window;
            int firstItem; // of the root list, -1 where there is none
            Ints before, question, after, repeated;
            const char *revealed;
            double revealPoints;
            const char *secondSlider;
            int secondValue;
            bool autoNewKeepsVerdict;
        } rows[] = {
            {"formmelody", -1, {61}, {48}, {61}, {48}, "C ", 18, "slidermultinotes", 1250, false},
            {"formintervalli", 12, {71, 72}, {71, 71}, {71, 72}, {71, 71}, "Unison", 16.5, "slidermultinotes", 1250, true},
            {"Formchords", 12, {71, 74, 78}, {59, 63, 66}, {59, 62, 66}, {59, 63, 66}, "B maj", 16.5, "slidermultinotes", 1250, true},
            {"Formscales", 12, {71, 73, 74, 76, 78, 79, 81, 83}, {59, 61, 63, 64, 66, 68, 70, 71}, {59, 61, 62, 64, 66, 67, 69, 71},
             {59, 61, 63, 64, 66, 68, 70, 71}, "B major", 9.75, "sliderintervals", 250, false},
            {"formarmonia", 11, {61, 64, 68, 49}, {59, 63, 66, 47}, {62, 65, 69, 50}, {62, 65, 69, 50}, "D min (II)", 16.5,
             "sliderintervals", 250, false}};
        const QStringList zero{"0", "0", "0", "0"};
        for (const Row &row : rows) {
            qInfo("%s", row.window);
            Panel p(row.window);
            QCOMPARE(p.slider("sliderautonew"), "1250 1250");
            QCOMPARE(p.slider(row.secondSlider), QStringLiteral("%1 %1").arg(row.secondValue));
            QVERIFY(p.get("New")->isEnabled() && !p.get("Repeat")->isEnabled() && !p.get("Reveal")->isEnabled());

            if (row.firstItem >= 0)
                p.get<QComboBox>("Combo1")->setCurrentIndex(row.firstItem);
            p.press("Notest");
            p.press(p.answerButton(1));
            QCOMPARE(p.take(), row.before);
            p.press("New");
            QCOMPARE(p.take(), row.question);
            if (row.firstItem >= 0)
                p.get<QComboBox>("Combo1")->setCurrentIndex(row.firstItem == 11 ? 0 : 1);
            p.press(p.answerButton(1));
            QCOMPARE(p.take(), row.after);
            p.press("Repeat");
            QCOMPARE(p.take(), row.repeated);
            p.press("Reveal");
            QCOMPARE(p.text("showlabel"), row.revealed);
            QCOMPARE(p.get("showlabel")->font().pointSizeF(), row.revealPoints);
            p.press(p.answerButton(0));
            QCOMPARE(test::score(p.w), zero);

            // Test mode: nothing is pending until New.
            p.press("Test");
            QVERIFY(p.get("questlabel")->isEnabled() && !p.get("Reveal")->isEnabled());
            p.take();
            p.press(p.answerButton(0));
            QVERIFY(p.played().isEmpty());
            QCOMPARE(p.text("anslabel"), "0");
            p.press("New");
            p.answer(false);
            QCOMPARE(p.verdict(), "Wrong! #ff0000");
            p.press("noanswers");
            p.press("New");
            QCOMPARE(p.text("rightwronglabel"), "");
            p.answer(true);
            QCOMPARE(p.verdict(), "Right! #00ff00");
            QCOMPARE(p.text("showlabel"), ""); // the answer stays hidden
            p.answer(false); // spent: the question is scored already
            p.press("noanswers");
            p.press("autonewcheck");
            p.press("New");
            p.answer(true);
            // 2 right of 3 questions: the percentage drops the fraction, and
            // the Auto NEW question is counted after it.
            QCOMPARE(test::score(p.w), QStringList({"4", "2", "3", "66"}));
            QCOMPARE(p.text("rightwronglabel"), row.autoNewKeepsVerdict ? "Right!" : "");
            QCOMPARE(p.text("showlabel").isEmpty(), !row.autoNewKeepsVerdict);
            p.press("Reset");
            QCOMPARE(test::score(p.w), zero);
        }
    }

    // Which waits let a click through while they run: a click posted before
    // the handler starts runs inside the first wait that processes events,
    // or after the handler when none does. The notes sent by then tell.
    void waitsLetClicksThrough()
    {
        const struct { const char *window; QStringList setup; const char *button; int notesBeforeTheClick; } rows[] = {
            {"formmelody", {"nnotes 3"}, "New", 1},
            {"formmelody", {"nnotes 3", "New"}, "Repeat", 1},
            {"formmelody", {"autonewcheck", "New"}, "tasto_0", 0},
            {"formintervalli", {}, "New", 1},
            {"formintervalli", {"Notest"}, "playint_7", 2},
            {"Formchords", {"Arpeggiooption"}, "New", 3},
            {"Formscales", {"Notest"}, "playscale_4", 6},
            {"formarmonia", {"autonewcheck", "New"}, "playchord_0", 0}};
        for (const auto &row : rows) {
            Panel p(row.window);
            for (const QString &step : row.setup)
                step == "nnotes 3" ? p.get<QComboBox>("nnotescombo")->setCurrentIndex(2) : p.press(step);
            p.gapSlider()->setValue(30);
            p.get<QSlider>("sliderautonew")->setValue(30);
            p.clearRecords();
            setWaitScale(1);
            int seen = -1;
            QMetaObject::invokeMethod(p.w, [&] { seen = int(p.played().size()); }, Qt::QueuedConnection);
            p.get<QAbstractButton>(row.button)->click();
            QCoreApplication::processEvents();
            QCOMPARE(QStringLiteral("%1 %2: %3").arg(row.window, row.button).arg(seen),
                     QStringLiteral("%1 %2: %3").arg(row.window, row.button).arg(row.notesBeforeTheClick));
        }
    }

    // Three notes are answered in playing order, each key counting for a
    // question; test-mode keys are silent. The answer shows on the piano too,
    // its keys lit and numbered in playing order until the next New or
    // Reset.
    void melodyAnswersSeveralNotes()
    {
        // The draws for 60 (C), 64 (E), 72 (C): octave among the 4th to 7th,
        // then the pitch class among C major's seven.
        const std::vector<double> CEC{rFor(1, 4), rFor(0, 7), rFor(1, 4), rFor(2, 7), rFor(2, 4), rFor(0, 7)};
        for (const bool inOrder : {true, false}) {
            Panel p("formmelody");
            p.get<QComboBox>("nnotescombo")->setCurrentIndex(2);
            p.random.script(CEC);
            p.press("New");
            auto *piano = p.get<PianoKeyboard>("pianokeyboard");
            const QImage unlit = piano->grab().toImage();
            const auto marks = [piano] { return QStringList(piano->answerMarks().begin(), piano->answerMarks().end()).join(u','); };
            // Judged once, after the last key: out of order, the first key
            // alone would be right.
            for (int key : inOrder ? Ints{0, 4, 0} : Ints{0, 0, 4})
                p.press(p.answerButton(key));
            QCOMPARE(test::score(p.w), inOrder ? QStringList({"3", "3", "1", "100"}) : QStringList({"3", "0", "1", "0"}));
            QCOMPARE(p.text("showlabel") + "|" + p.text("rightwronglabel"), inOrder ? "C E C |Right!" : "C E C |Wrong!");
            QCOMPARE(p.played(), (Ints{60, 64, 72}));
            QCOMPARE(marks(), "1 3,,,,2,,,,,,,");
            QVERIFY(piano->grab().toImage() != unlit);
            p.press(inOrder ? "Reset" : "New");
            QCOMPARE(marks(), ",,,,,,,,,,,");
        }
    }

    // Typed into the number box, a number of the list chooses it; any other
    // text chooses nothing, and New then plays and counts nothing. Letters
    // typed there stay there; V reveals, in test mode too, six notes or more
    // in 10-point type, five or fewer in 18. Elsewhere every letter, with
    // each modifier state, wherever the focus is in the window: Ctrl alone
    // gives the sharp, any other state acts as the plain letter. In practice
    // mode a key plays its note in the 5th octave; N asks (the note 48), R
    // repeats and S empties the labels.
    void melodyKeys()
    {
        Panel p("formmelody");
        auto *box = p.get<QComboBox>("nnotescombo");
        for (const auto &[typed, notes, points] : {std::tuple("5", 5, 18.0), {"6", 6, 10.0}, {"10", 10, 10.0},
                                                   {"11", 0, 18.0}, {"three", 0, 18.0}, {"3 ", 0, 18.0}}) {
            box->setFocus();
            box->lineEdit()->selectAll();
            QTest::keyClicks(box, QLatin1String(typed));
            QTest::keyClick(box, Qt::Key_Return);
            p.press("Reset");
            p.press("New");
            QTest::keyClick(p.w, Qt::Key_V);
            QCOMPARE(QStringLiteral("%1: %2 %3 %4 %5").arg(box->currentText(), test::score(p.w).constFirst()).arg(p.take().size())
                         .arg(p.text("showlabel")).arg(p.get("showlabel")->font().pointSizeF()),
                     QStringLiteral("%1: %2 %2 %3 %4").arg(QLatin1String(typed)).arg(notes).arg(QString("C ").repeated(notes)).arg(points));
        }
        box->setCurrentIndex(0);
        const struct { Qt::Key key; int plain, ctrl; } letters[] = {{Qt::Key_C, 60, 61}, {Qt::Key_D, 62, 63},
            {Qt::Key_E, 64, 64}, {Qt::Key_F, 65, 66}, {Qt::Key_G, 67, 68}, {Qt::Key_A, 69, 70}, {Qt::Key_B, 71, 71},
            {Qt::Key_N, 48, 48}, {Qt::Key_R, 48, 48}, {Qt::Key_X, 0, 0}, {Qt::Key_H, 0, 0}};
        const Qt::KeyboardModifiers states[] = {Qt::NoModifier, Qt::ControlModifier, Qt::ShiftModifier, Qt::AltModifier,
            Qt::ControlModifier | Qt::ShiftModifier, Qt::ControlModifier | Qt::AltModifier};
        p.press("Notest");
        for (const auto &letter : letters) {
            for (const Qt::KeyboardModifiers state : states) {
                QTest::keyClick(p.get("Nota_1"), letter.key, state);
                QTest::keyClick(p.get("tasto_11"), letter.key, state);
                const int note = state == Qt::ControlModifier ? letter.ctrl : letter.plain;
                QVERIFY2(p.take() == (note ? Ints{note, note} : Ints{}),
                         qPrintable(QStringLiteral("%1 with modifiers %2").arg(QChar(letter.key)).arg(int(state))));
            }
        }
        QVERIFY(!p.get<QCheckBox>("Nota_1")->isChecked());
        QTest::keyClick(p.w, Qt::Key_V, Qt::AltModifier);
        QCOMPARE(p.text("showlabel"), "C ");
        QTest::keyClick(p.w, Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(p.text("showlabel"), "");
    }
};

QTEST_MAIN(tst_exercisepanel)
#include "tst_exercisepanel.moc"
