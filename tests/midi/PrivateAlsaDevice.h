#pragma once

// ALSA alone, with no sound server: for as long as it lives, this process's
// ALSA `default` device is the file plugin over the null device, writing
// every sample played to a file of the test's own, and no PulseAudio server
// can be reached.

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

#include <vector>

namespace tonaro::test {

class PrivateAlsaDevice
{
public:
    PrivateAlsaDevice()
        : m_savedConfig(qgetenv("ALSA_CONFIG_PATH"))
        , m_savedServer(qgetenv("PULSE_SERVER"))
    {
        QFile config(m_dir.filePath(QStringLiteral("asound.conf")));
        if (!m_dir.isValid() || !config.open(QIODevice::WriteOnly))
            return;
        // A configuration of its own alone, not the system's: no
        // definition there can send the default device elsewhere.
        config.write("pcm.!default { type file slave.pcm { type null } file \"" + recordingPath().toLocal8Bit()
                     + "\" format \"raw\" }\n");
        config.close();
        qputenv("ALSA_CONFIG_PATH", config.fileName().toLocal8Bit());
        qputenv("PULSE_SERVER", "unix:" + m_dir.filePath(QStringLiteral("no-server")).toLocal8Bit());
        m_ready = true;
    }
    ~PrivateAlsaDevice()
    {
        restore("ALSA_CONFIG_PATH", m_savedConfig);
        restore("PULSE_SERVER", m_savedServer);
    }
    PrivateAlsaDevice(const PrivateAlsaDevice &) = delete;
    PrivateAlsaDevice &operator=(const PrivateAlsaDevice &) = delete;

    bool isReady() const { return m_ready; }
    QString recordingPath() const { return m_dir.filePath(QStringLiteral("played.raw")); }

    // The left channel of all that was played so far; the synthesizer
    // plays float stereo, which the file plugin writes as it comes.
    std::vector<float> played() const
    {
        QFile file(recordingPath());
        std::vector<float> left;
        if (!file.open(QIODevice::ReadOnly))
            return left;
        const QByteArray bytes = file.readAll();
        const auto *values = reinterpret_cast<const float *>(bytes.constData());
        for (qsizetype i = 0; i + 1 < bytes.size() / qsizetype(sizeof(float)); i += 2)
            left.push_back(values[i]);
        return left;
    }

private:
    static void restore(const char *name, const QByteArray &value)
    {
        if (value.isNull())
            qunsetenv(name);
        else
            qputenv(name, value);
    }

    QTemporaryDir m_dir;
    QByteArray m_savedConfig;
    QByteArray m_savedServer;
    bool m_ready = false;
};

} // namespace tonaro::test
