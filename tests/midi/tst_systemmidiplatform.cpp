// The platform the program runs on: device ids, handles, errors and the
// bytes sent, with the system's ports through a fake MIDI service.

#include "midi/SystemMidiPlatform.h"

#include <QtTest>

using namespace tonaro;

namespace {

// Every message sent to any port, in hex.
QStringList g_sent;

// The system's MIDI service as the tests want it: ports that can be taken away.
struct FakePorts : SystemMidiPorts {
    std::vector<std::string> names{"Keys", "Sampler"};

    struct Port : SystemMidiPort {
        MidiResult send(const std::uint8_t *bytes, std::size_t count) override
        {
            g_sent << QByteArray(reinterpret_cast<const char *>(bytes), qsizetype(count)).toHex(' ');
            return MidiResult::Ok;
        }
    };
    std::vector<std::string> portNames() override { return names; }
    MidiResult open(const std::string &name, std::unique_ptr<SystemMidiPort> &port) override
    {
        port = std::ranges::count(names, name) > 0 ? std::make_unique<Port>() : nullptr;
        return port ? MidiResult::Ok : MidiResult::DeviceVanished;
    }
};

constexpr int Ok = toCode(MidiResult::Ok);

} // namespace

class SystemMidiPlatformTest : public QObject
{
    Q_OBJECT

private slots:
    // Ids: -1 the mapper, 0 the built-in synthesizer (the two are one
    // device), then the ports. A device opens once at a time; a port takes
    // the short messages as their bytes, and is silenced on every channel
    // as it closes.
    void opensSendsAndCloses()
    {
        auto *ports = new FakePorts;
        SystemMidiPlatform platform(std::make_unique<BuiltInSynth>(BuiltInSynth::Options{{}, BuiltInSynth::Output::None, {}}),
                                    std::unique_ptr<SystemMidiPorts>(ports));
        MidiHandle sampler = 0, other = 0;
        QCOMPARE(platform.open(&other, 3), toCode(MidiResult::BadDeviceId));
        QCOMPARE(platform.open(&sampler, 2), Ok);
        QCOMPARE(platform.open(&other, 2), toCode(MidiResult::DeviceInUse));
        QCOMPARE(platform.sendShortMessage(sampler, 0x05C2), Ok);
        QCOMPARE(platform.sendShortMessage(sampler, 0x643C91), Ok);
        QCOMPARE(g_sent, (QStringList{"c2 05", "91 3c 64"}));
        QCOMPARE(platform.close(sampler), Ok);
        // All sound off and all notes off on channels 1 to 16.
        QCOMPARE(g_sent.size(), 2 + 32);
        QCOMPARE(g_sent.mid(2, 2) << g_sent.last(), (QStringList{"b0 78 00", "b0 7b 00", "bf 7b 00"}));

        // Unplugged while the settings dialog showed the list; the list read
        // afresh no longer has it, and the other port has moved up.
        ports->names.erase(ports->names.begin());
        QCOMPARE(platform.open(&other, 1), toCode(MidiResult::DeviceVanished));
        QCOMPARE(platform.outputDeviceCount(), 2);
        QCOMPARE(platform.open(&other, 1), Ok);

        if (platform.open(&sampler, -1) != Ok)
            QSKIP("No General MIDI SoundFont installed (package timgm6mb-soundfont)");
        QCOMPARE(platform.open(&other, 0), toCode(MidiResult::DeviceInUse));
    }
};

QTEST_GUILESS_MAIN(SystemMidiPlatformTest)
#include "tst_systemmidiplatform.moc"
