#pragma once

// ALSA alone, with no sound server: for as long as it lives, this process's
// ALSA `default` device is the file plugin over the null device, writing
// every sample played to a file of the test's own (or there is none), and no
// sound server can be reached.

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

#include <vector>

namespace tonaro::test {

class PrivateAlsaDevice
{
public:
    // NoDefault: a configuration with no default device at all.
    enum Device { File, NoDefault };

    explicit PrivateAlsaDevice(Device device = File)
    {
        // A configuration of its own alone, not the system's: no
        // definition there can send the default device elsewhere.
        QFile config(m_dir.filePath(QStringLiteral("asound.conf")));
        m_ready = m_dir.isValid() && config.open(QIODevice::WriteOnly)
            && (device == NoDefault
                || config.write("pcm.!default { type file slave.pcm { type null } file \"" + m_dir.filePath("played.raw").toLocal8Bit()
                                + "\" format \"raw\" }\n") > 0);
        qputenv("ALSA_CONFIG_PATH", config.fileName().toLocal8Bit());
        qputenv("PULSE_SERVER", "unix:" + m_dir.filePath(QStringLiteral("no-server")).toLocal8Bit());
        qputenv("PIPEWIRE_RUNTIME_DIR", m_dir.path().toLocal8Bit());
    }
    ~PrivateAlsaDevice()
    {
        for (const auto &[name, value] : {std::pair{"ALSA_CONFIG_PATH", m_savedConfig}, {"PULSE_SERVER", m_savedServer}, {"PIPEWIRE_RUNTIME_DIR", m_savedPipeWire}})
            value.isNull() ? qunsetenv(name) : qputenv(name, value);
    }
    PrivateAlsaDevice(const PrivateAlsaDevice &) = delete;
    PrivateAlsaDevice &operator=(const PrivateAlsaDevice &) = delete;

    bool isReady() const { return m_ready; }

    // The left channel of what was played from that frame on; the
    // synthesizer plays float stereo, which the file plugin writes as it comes.
    std::vector<float> played(qsizetype from = 0) const
    {
        QFile file(m_dir.filePath(QStringLiteral("played.raw")));
        const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        const auto *values = reinterpret_cast<const float *>(bytes.constData());
        std::vector<float> left;
        for (qsizetype i = 2 * from; i + 1 < bytes.size() / qsizetype(sizeof(float)); i += 2)
            left.push_back(values[i]);
        return left;
    }

private:
    const QByteArray m_savedConfig = qgetenv("ALSA_CONFIG_PATH");
    const QByteArray m_savedServer = qgetenv("PULSE_SERVER");
    const QByteArray m_savedPipeWire = qgetenv("PIPEWIRE_RUNTIME_DIR");
    QTemporaryDir m_dir;
    bool m_ready = false;
};

} // namespace tonaro::test
