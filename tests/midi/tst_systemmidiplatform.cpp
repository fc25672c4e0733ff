// The platform the program runs on: device ids, handles and errors, the
// system's ports through a fake MIDI service, and RtMidi on whatever this
// machine has (often no ALSA sequencer at all).

#include "midi/MidiMessages.h"
#include "midi/RtMidiPorts.h"
#include "midi/SoundFontLocator.h"
#include "midi/SystemMidiPlatform.h"

#include <QtTest>

using namespace tonaro;

namespace {

using Bytes = std::vector<std::uint8_t>;

// The system's MIDI service as the tests want it: ports that can be taken
// away, and every message each port was sent.
struct FakeService {
    std::vector<std::string> ports;
    std::map<std::string, std::vector<Bytes>> sent;
};

class FakePort : public SystemMidiPort
{
public:
    FakePort(FakeService &service, std::string name) : m_service(service), m_name(std::move(name)) {}
    MidiResult send(const std::uint8_t *bytes, std::size_t count) override
    {
        m_service.sent[m_name].emplace_back(bytes, bytes + count);
        return MidiResult::Ok;
    }

private:
    FakeService &m_service;
    std::string m_name;
};

class FakePorts : public SystemMidiPorts
{
public:
    explicit FakePorts(FakeService &service) : m_service(service) {}
    std::vector<std::string> portNames() override { return m_service.ports; }
    MidiResult open(const std::string &name, std::unique_ptr<SystemMidiPort> &port) override
    {
        if (std::find(m_service.ports.begin(), m_service.ports.end(), name) == m_service.ports.end())
            return MidiResult::DeviceVanished;
        port = std::make_unique<FakePort>(m_service, name);
        return MidiResult::Ok;
    }

private:
    FakeService &m_service;
};

std::unique_ptr<BuiltInSynth> offlineSynth()
{
    return std::make_unique<BuiltInSynth>(BuiltInSynth::Options{{}, BuiltInSynth::Output::None, {}});
}

constexpr int Ok = toCode(MidiResult::Ok);

} // namespace

class SystemMidiPlatformTest : public QObject
{
    Q_OBJECT

    FakeService m_service;
    std::unique_ptr<SystemMidiPlatform> m_platform;

private slots:
    void initTestCase()
    {
        if (findGeneralMidiSoundFont().empty())
            QSKIP("No General MIDI SoundFont installed (package timgm6mb-soundfont)");
    }

    void init()
    {
        // The old platform silences its open ports as it goes.
        m_platform.reset();
        m_service = FakeService{{"Keys:Keys MIDI 1 20:0", "Sampler:in 128:0"}, {}};
        m_platform = std::make_unique<SystemMidiPlatform>(offlineSynth(), std::make_unique<FakePorts>(m_service));
    }

    // A device opens once at a time; with no first device the second opens alone.
    void opensOrRefuses_data()
    {
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("second");
        QTest::addColumn<MidiResult>("result");
        constexpr int None = INT_MIN;
        QTest::newRow("mapper") << None << -1 << MidiResult::Ok;
        QTest::newRow("past the last port") << None << 3 << MidiResult::BadDeviceId;
        QTest::newRow("below the mapper") << None << -2 << MidiResult::BadDeviceId;
        QTest::newRow("synthesizer twice") << 0 << 0 << MidiResult::DeviceInUse;
        QTest::newRow("mapper, then synthesizer") << -1 << 0 << MidiResult::DeviceInUse;
        QTest::newRow("port twice") << 1 << 1 << MidiResult::DeviceInUse;
        QTest::newRow("two ports") << 1 << 2 << MidiResult::Ok;
        QTest::newRow("port and synthesizer") << 2 << 0 << MidiResult::Ok;
    }

    void opensOrRefuses()
    {
        QFETCH(int, first);
        QFETCH(int, second);
        QFETCH(MidiResult, result);
        MidiHandle a = 0, b = 0;
        if (first != INT_MIN)
            QCOMPARE(m_platform->open(&a, first), Ok);
        QCOMPARE(m_platform->open(&b, second), toCode(result));
        QCOMPARE(b != 0, result == MidiResult::Ok);
        // Once closed, the device opens again.
        if (result == MidiResult::DeviceInUse) {
            QCOMPARE(m_platform->close(a), Ok);
            QCOMPARE(m_platform->open(&b, second), Ok);
        }
    }

    // Each message goes to a port with its own length; a bad one goes nowhere.
    void sendsEachMessageWithItsLength_data()
    {
        QTest::addColumn<std::uint32_t>("message");
        QTest::addColumn<Bytes>("bytes");
        QTest::newRow("note on") << midi::packShortMessage(0x93, 60, 100) << Bytes{0x93, 60, 100};
        QTest::newRow("program change") << midi::packShortMessage(0xC0, 24, 0) << Bytes{0xC0, 24};
        QTest::newRow("timing clock") << std::uint32_t(0xF8) << Bytes{0xF8};
        QTest::newRow("no status") << std::uint32_t(0x3C) << Bytes{};
        QTest::newRow("data above 127") << midi::packShortMessage(0x90, 60, 200) << Bytes{};
    }

    void sendsEachMessageWithItsLength()
    {
        QFETCH(std::uint32_t, message);
        QFETCH(Bytes, bytes);
        MidiHandle handle = 0;
        QCOMPARE(m_platform->open(&handle, 1), Ok);
        QCOMPARE(m_platform->sendShortMessage(handle, message), toCode(bytes.empty() ? MidiResult::DataOutOfRange : MidiResult::Ok));
        QCOMPARE(m_service.sent[m_service.ports[0]], bytes.empty() ? std::vector<Bytes>{} : std::vector<Bytes>{bytes});
    }

    void silencesAPortBeforeClosingIt()
    {
        MidiHandle handle = 0;
        QCOMPARE(m_platform->open(&handle, 2), Ok);
        QCOMPARE(m_platform->close(handle), Ok);

        std::vector<Bytes> expected;
        for (std::uint8_t channel = 0; channel < midi::ChannelCount; ++channel) {
            expected.push_back({std::uint8_t(midi::ControlChangeStatus + channel), midi::AllSoundOff, 0});
            expected.push_back({std::uint8_t(midi::ControlChangeStatus + channel), midi::AllNotesOff, 0});
        }
        QCOMPARE(m_service.sent[m_service.ports[1]], expected);
        QVERIFY(m_service.sent[m_service.ports[0]].empty());
    }

    void vanishedPortGivesDeviceVanished()
    {
        QCOMPARE(m_platform->outputDeviceCount(), 3);
        // Unplugged while the settings dialog showed the list.
        m_service.ports.erase(m_service.ports.begin());
        MidiHandle handle = 0;
        QCOMPARE(m_platform->open(&handle, 1), toCode(MidiResult::DeviceVanished));
        QCOMPARE(handle, MidiHandle(0));
        // The list read afresh no longer has it; the other port has moved up.
        QCOMPARE(m_platform->outputDeviceCount(), 2);
        QCOMPARE(m_platform->open(&handle, 1), Ok);
    }

    void alsaPortNamesAreShortened_data()
    {
        QTest::addColumn<QString>("rtMidiName");
        QTest::addColumn<QString>("shown");

        QTest::newRow("port repeats client") << "Midi Through:Midi Through Port-0 14:0" << "Midi Through Port-0";
        QTest::newRow("port of its own") << "FLUID Synth (123):Synth input port 128:0" << "FLUID Synth (123): Synth input port";
        QTest::newRow("colon in port name") << "USB Uno:USB Uno MIDI 1:1 24:0" << "USB Uno MIDI 1:1";
        QTest::newRow("no address") << "Something else" << "Something else";
    }

    void alsaPortNamesAreShortened()
    {
        QFETCH(QString, rtMidiName);
        QFETCH(QString, shown);
        QCOMPARE(QString::fromStdString(displayNameOfAlsaPort(rtMidiName.toStdString())), shown);
    }

    void realMidiServiceNeverFailsTheList()
    {
        // Whatever this machine has: without /dev/snd or an ALSA sequencer the
        // list holds the built-in synthesizer alone, and nothing throws.
        SystemMidiPlatform platform(offlineSynth(), std::make_unique<RtMidiPorts>());
        const int count = platform.outputDeviceCount();
        if (!QFileInfo::exists(QStringLiteral("/dev/snd/seq")))
            QCOMPARE(count, 1);
        QVERIFY(count >= 1);
        for (int id = 1; id < count; ++id)
            QVERIFY(!platform.deviceName(id).isEmpty());
        MidiHandle handle = 0;
        QCOMPARE(platform.open(&handle, count), toCode(MidiResult::BadDeviceId));
        QCOMPARE(platform.outputDeviceCount(), count);
    }
};

QTEST_GUILESS_MAIN(SystemMidiPlatformTest)
#include "tst_systemmidiplatform.moc"
