// End to end through a real MIDI system: a JACK server of the test's own
// (dummy driver), the program's input on it, and keyboards that are RtMidi
// output ports of the test. Skipped with a message where JACK cannot start,
// except in CI, which installs it.

#include "PrivateJackServer.h"
#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "midi/JackServer.h"
#include "midi/RtMidiInput.h"

#include <RtMidi.h>

using namespace tonaro;
using namespace tonaro::test;

namespace {

// What the program needs to find a new port, with room for a busy machine.
constexpr int FindWithinMs = 2000;

// A MIDI keyboard: an output port of its own on the JACK server.
struct Keyboard : RtMidiOut {
    explicit Keyboard(const std::string &name) : RtMidiOut(RtMidi::UNIX_JACK, name) { openVirtualPort("out"); }
    void send(std::vector<unsigned char> message) { sendMessage(&message); }
};

} // namespace

class MidiInEndToEndTest : public QObject
{
    Q_OBJECT

    PrivateJackServer m_jack;

private slots:
    void initTestCase()
    {
        if (m_jack.start())
            return;
        const QString why = QStringLiteral("no JACK server for the end-to-end MIDI test: ") + m_jack.error();
        if (qEnvironmentVariableIsSet("CI"))
            QFAIL(qPrintable(why));
        QSKIP(qPrintable(why));
    }

    // The program's own port takes notes from a program connected to it; a
    // keyboard plugged in while the program runs is listened to within two
    // seconds; the port the program plays to never is. A keyboard unplugged,
    // and then the server going away, close their inputs without a word.
    void keyboardsAnswerByPlaying()
    {
        RtMidiInput input([] { return std::vector<std::string>{"sender:out"}; });
        Loaded<ExercisePanel> window(false, [&input](Services services) {
            services.input = &input;
            return test::makeExercise("Formchords", services);
        });
        auto listensTo = [&input](const std::string &keyboard) {
            return std::ranges::count(input.openSources(), "jack:" + keyboard + ":out") > 0;
        };
        // "min", the 2nd of the main chords, on C, twice.
        window.random.script({rFor(1, 7), rFor(1, 7)});
        // A program connected to the program's own port, which the program also plays to.
        Keyboard sender("sender");
        JackServer jack;
        QTRY_VERIFY_WITH_TIMEOUT(jack.running() && jack.connect("sender:out", "Tonaro:Tonaro"), FindWithinMs);
        window.press("New");
        // D F A D on channel 16; a release and a note-off answer nothing.
        for (unsigned char note : {62, 65, 69, 74})
            sender.send({0x9F, note, 90});
        sender.send({0x90, 66, 0});
        sender.send({0x80, 66, 64});
        QTRY_COMPARE(window.text("rightwronglabel"), QStringLiteral("Right!"));

        auto keys = std::make_unique<Keyboard>("keys");
        QTRY_VERIFY_WITH_TIMEOUT(listensTo("keys"), FindWithinMs);
        QVERIFY(!listensTo("sender"));
        window.press("New");
        for (unsigned char note : {62, 66, 69})
            keys->send({0x90, note, 1});
        QTRY_COMPARE(window.text("rightwronglabel"), QStringLiteral("Wrong!"));
        QCOMPARE(score(window.w), (QStringList{"2", "1", "2", "50"}));
        keys.reset();
        QTRY_VERIFY_WITH_TIMEOUT(!listensTo("keys"), FindWithinMs + 1000);

        m_jack.stop();
        QTRY_VERIFY_WITH_TIMEOUT(!input.hasOwnPort(), FindWithinMs + 1000);
        QCOMPARE(window.boxes.texts(), QStringList());
    }
};

QTEST_MAIN(MidiInEndToEndTest)
#include "tst_midiin_e2e.moc"
