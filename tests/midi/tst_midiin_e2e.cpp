// End to end through a real MIDI system: a JACK server of the test's own
// (dummy driver), the program's input on it, and keyboards that are RtMidi
// output ports of the test. Skipped with a message where JACK cannot start.

#include "PrivateJackServer.h"
#include "TestServices.h"

#include "exercises/Formchords/Formchords.h"
#include "exercises/Formscales/Formscales.h"
#include "exercises/formarmonia/formarmonia.h"
#include "exercises/formintervalli/formintervalli.h"
#include "exercises/formmelody/formmelody.h"
#include "midi/RtMidiInput.h"

#include <RtMidi.h>
#include <thread>

using namespace tonaro;
using namespace tonaro::test;
using Ints = QList<int>;
using Draws = QList<double>;

namespace {

// What the program needs to find a new port, with room for a busy machine.
constexpr int FindWithinMs = 2000;

// A MIDI keyboard: an output port of its own on the JACK server.
class Keyboard
{
public:
    explicit Keyboard(const std::string &name)
        : m_out(RtMidi::UNIX_JACK, name)
    {
        m_out.openVirtualPort("out");
    }
    // Connected to a port of the program instead of waiting to be found.
    Keyboard(const std::string &name, const std::string &destination)
        : m_out(RtMidi::UNIX_JACK, name)
    {
        for (unsigned int i = 0; i < m_out.getPortCount(); ++i) {
            if (m_out.getPortName(i) == destination)
                m_out.openPort(i, "out");
        }
    }
    std::string source(const std::string &name) const { return "jack:" + name + ":out"; }

    void strike(int note) { send({0x90, (unsigned char)note, 90}); }
    void release(int note) { send({0x80, (unsigned char)note, 0}); }
    void send(std::vector<unsigned char> message) { m_out.sendMessage(&message); }
    // A chord or a run: each key struck 5 ms after the one before, then released.
    void play(const Ints &notes)
    {
        for (int note : notes) {
            strike(note);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        for (int note : notes)
            send({0x90, (unsigned char)note, 0});
    }

private:
    RtMidiOut m_out;
};

bool listensTo(const RtMidiInput &input, const std::string &source)
{
    const auto open = input.openSources();
    return std::find(open.begin(), open.end(), source) != open.end();
}

struct Program : TestServices {
    RtMidiInput input;
    QPointer<ExercisePanel> window;

    explicit Program(const QString &name, std::function<std::vector<std::string>()> outputs = {})
        : input(std::move(outputs))
    {
        Services withInput = services;
        withInput.input = &input;
        window = test::makeExercise(name, withInput);
        window->Form_Load();
        window->show();
        child<QCheckBox>(window, QStringLiteral("autonewcheck"))->setChecked(false);
    }
    ~Program() { delete window; }
    void ask(const Draws &draws)
    {
        random.script(std::vector<double>(draws.begin(), draws.end()));
        click(window, QStringLiteral("New"));
    }
    QString verdict() const { return text(window, QStringLiteral("rightwronglabel")); }
};

} // namespace

class MidiInEndToEndTest : public QObject
{
    Q_OBJECT

    PrivateJackServer m_jack;

private slots:
    void initTestCase()
    {
        if (!m_jack.start())
            QSKIP(qPrintable(QStringLiteral("no JACK server for the end-to-end MIDI test: ") + m_jack.error()));
    }
    void cleanupTestCase() { m_jack.stop(); }

    void answersByPlaying_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<Draws>("draws");
        QTest::addColumn<Ints>("right");
        QTest::addColumn<Ints>("wrong");
        // Note recognition: 5th octave, E (note 64).
        QTest::newRow("melody") << "formmelody" << Draws{rFor(1, 4), rFor(2, 7)} << Ints{40} << Ints{41};
        // The perfect fifth, the 5th of the main intervals.
        QTest::newRow("intervals") << "formintervalli" << Draws{rFor(4, 8)} << Ints{70, 63} << Ints{60, 66};
        // "min", the 2nd of the main chords.
        QTest::newRow("chords") << "Formchords" << Draws{rFor(1, 7)} << Ints{62, 65, 69, 74} << Ints{62, 66, 69};
        // "major", the 1st of the main scales.
        QTest::newRow("scales") << "Formscales" << Draws{rFor(0, 7)} << Ints{65, 67, 69, 70, 72, 74, 76, 77}
                                << Ints{65, 67, 68, 70, 72, 73, 75, 77};
        // Degree V of C major, G B D.
        QTest::newRow("harmony") << "formarmonia" << Draws{rFor(4, 7)} << Ints{62, 67, 71} << Ints{62, 65, 69};
    }
    void answersByPlaying()
    {
        QFETCH(QString, window);
        QFETCH(Draws, draws);
        QFETCH(Ints, right);
        QFETCH(Ints, wrong);

        Program program(window);
        Keyboard keys("keys");
        QTRY_VERIFY_WITH_TIMEOUT(listensTo(program.input, keys.source("keys")), FindWithinMs + 1000);

        program.ask(draws);
        keys.play(right);
        QTRY_COMPARE(program.verdict(), QStringLiteral("Right!"));
        QCOMPARE(score(program.window), (QStringList{"1", "1", "1", "100"}));

        program.ask(draws);
        QCOMPARE(program.verdict(), QString());
        keys.play(wrong);
        QTRY_COMPARE(program.verdict(), QStringLiteral("Wrong!"));
        QCOMPARE(score(program.window), (QStringList{"2", "1", "2", "50"}));
        QCOMPARE(program.boxes.texts(), QStringList());
    }

    // Plugged in while the program runs: listened to within two seconds;
    // unplugged: closed without a word, and the program goes on.
    void keyboardComesAndGoes()
    {
        Program program("formmelody");
        QTest::qWait(200);
        QElapsedTimer plugged;
        auto later = std::make_unique<Keyboard>("later");
        plugged.start();
        QTRY_VERIFY_WITH_TIMEOUT(listensTo(program.input, later->source("later")), FindWithinMs + 1000);
        QVERIFY2(plugged.elapsed() <= FindWithinMs, qPrintable(QString::number(plugged.elapsed()) + " ms"));

        program.ask({rFor(1, 4), rFor(0, 7)});
        later->play({72});
        QTRY_COMPARE(program.verdict(), QStringLiteral("Right!"));

        later.reset();
        QTRY_VERIFY_WITH_TIMEOUT(!listensTo(program.input, "jack:later:out"), FindWithinMs + 1000);
        QCOMPARE(program.boxes.texts(), QStringList());

        Keyboard again("again");
        QTRY_VERIFY_WITH_TIMEOUT(listensTo(program.input, again.source("again")), FindWithinMs + 1000);
        program.ask({rFor(1, 4), rFor(6, 7)});
        again.play({59});
        QTRY_COMPARE(program.verdict(), QStringLiteral("Right!"));
        QCOMPARE(score(program.window), (QStringList{"2", "2", "2", "100"}));
    }

    // The program's own port takes notes from a program connected to it;
    // a port the program plays to is never listened to.
    void ownPortTakesNotes()
    {
        Program program("formmelody", [] { return std::vector<std::string>{"sender:out"}; });
        QTRY_VERIFY_WITH_TIMEOUT(program.input.hasOwnPort(), FindWithinMs);
        Keyboard sender("sender", "Tonaro:Tonaro");
        program.ask({rFor(1, 4), rFor(3, 7)});
        sender.play({53});
        QTRY_COMPARE(program.verdict(), QStringLiteral("Right!"));
        QTest::qWait(FindWithinMs);
        QVERIFY(!listensTo(program.input, "jack:sender:out"));
    }

    // Only note-on with a velocity above 0 answers.
    void otherMessagesAnswerNothing()
    {
        Program program("formmelody");
        Keyboard keys("quiet");
        QTRY_VERIFY_WITH_TIMEOUT(listensTo(program.input, keys.source("quiet")), FindWithinMs + 1000);
        program.ask({rFor(1, 4), rFor(0, 7)});
        keys.send({0x90, 60, 0});
        keys.send({0x80, 60, 64});
        keys.send({0xB0, 64, 127});
        keys.send({0xA0, 60, 64});
        QTest::qWait(300);
        QCOMPARE(program.verdict(), QString());
        keys.send({0x95, 60, 1});
        QTRY_COMPARE(program.verdict(), QStringLiteral("Right!"));
    }

    // Last, since it stops the server: a server that goes away takes its
    // inputs with it, without a word, and the program goes on.
    void serverGoingAwayClosesItsInputs()
    {
        Program program("formmelody");
        auto keys = std::make_unique<Keyboard>("gone");
        QTRY_VERIFY_WITH_TIMEOUT(listensTo(program.input, keys->source("gone")), FindWithinMs + 1000);
        QVERIFY(program.input.hasOwnPort());
        m_jack.stop();
        QTRY_VERIFY_WITH_TIMEOUT(program.input.openSources().empty() && !program.input.hasOwnPort(), FindWithinMs + 1000);
        keys.reset();
        program.ask({rFor(1, 4), rFor(0, 7)});
        click(program.window, QStringLiteral("tasto_0"));
        QCOMPARE(program.verdict(), QStringLiteral("Right!"));
        QCOMPARE(program.boxes.texts(), QStringList());
    }
};

QTEST_MAIN(MidiInEndToEndTest)
#include "tst_midiin_e2e.moc"
