// The platform the program runs on: device ids, handles and errors, with the
// system's ports through a fake MIDI service.

#include "midi/SoundFontLocator.h"
#include "midi/SystemMidiPlatform.h"

#include <QtTest>

using namespace tonaro;

namespace {

// The system's MIDI service as the tests want it: ports that can be taken away.
class FakePorts : public SystemMidiPorts
{
    struct Port : SystemMidiPort {
        MidiResult send(const std::uint8_t *, std::size_t) override { return MidiResult::Ok; }
    };

public:
    explicit FakePorts(std::vector<std::string> &ports) : m_ports(ports) {}
    std::vector<std::string> portNames() override { return m_ports; }
    MidiResult open(const std::string &name, std::unique_ptr<SystemMidiPort> &port) override
    {
        if (std::find(m_ports.begin(), m_ports.end(), name) == m_ports.end())
            return MidiResult::DeviceVanished;
        port = std::make_unique<Port>();
        return MidiResult::Ok;
    }

private:
    std::vector<std::string> &m_ports;
};

constexpr int Ok = toCode(MidiResult::Ok);

} // namespace

class SystemMidiPlatformTest : public QObject
{
    Q_OBJECT

    std::vector<std::string> m_ports;
    std::unique_ptr<SystemMidiPlatform> m_platform;

private slots:
    void initTestCase()
    {
        if (findGeneralMidiSoundFont().empty())
            QSKIP("No General MIDI SoundFont installed (package timgm6mb-soundfont)");
    }

    void init()
    {
        m_platform.reset(); // it silences its open ports as it goes
        m_ports = {"Keys", "Sampler"};
        m_platform = std::make_unique<SystemMidiPlatform>(
            std::make_unique<BuiltInSynth>(BuiltInSynth::Options{{}, BuiltInSynth::Output::None, {}}),
            std::make_unique<FakePorts>(m_ports));
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
        QTest::newRow("synthesizer twice") << 0 << 0 << MidiResult::DeviceInUse;
        QTest::newRow("mapper, then synthesizer") << -1 << 0 << MidiResult::DeviceInUse;
        QTest::newRow("two ports") << 1 << 2 << MidiResult::Ok;
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

    void vanishedPortGivesDeviceVanished()
    {
        QCOMPARE(m_platform->outputDeviceCount(), 3);
        // Unplugged while the settings dialog showed the list.
        m_ports.erase(m_ports.begin());
        MidiHandle handle = 0;
        QCOMPARE(m_platform->open(&handle, 1), toCode(MidiResult::DeviceVanished));
        QCOMPARE(handle, MidiHandle(0));
        // The list read afresh no longer has it; the other port has moved up.
        QCOMPARE(m_platform->outputDeviceCount(), 2);
        QCOMPARE(m_platform->open(&handle, 1), Ok);
    }
};

QTEST_GUILESS_MAIN(SystemMidiPlatformTest)
#include "tst_systemmidiplatform.moc"
