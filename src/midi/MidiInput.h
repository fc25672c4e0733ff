#pragma once

#include <QObject>
#include <array>
#include <chrono>

namespace tonaro {

// Notes played on MIDI keyboards, as the user-interface thread sees them:
// the seam between the exercise windows and the system's MIDI inputs
// (RtMidiInput in the program, a double that plays notes in the tests).
// Only struck keys come through: note-on messages with a velocity above 0.
class MidiInput : public QObject
{
    Q_OBJECT

public:
    using Moment = std::chrono::steady_clock::time_point;

    // A keyboard played into two inputs at once (its own port, and a bridge
    // that mirrors it) gives the same note twice within this time: once is enough.
    static constexpr std::chrono::milliseconds EchoWindow{15};

    explicit MidiInput(QObject *parent = nullptr);

    // From any thread, the MIDI service's included: hands a struck key over
    // to the user-interface thread, which emits notePlayed once it processes
    // events (at once in a wait that processes them, after a wait that
    // processes none). source tells the inputs apart.
    void handOver(int note, Moment struck, const void *source);

signals:
    // A key struck at that moment, on the user-interface thread.
    void notePlayed(int note, tonaro::MidiInput::Moment struck);

private:
    void deliver(int note, Moment struck, const void *source);

    // When each note was last let through, and from which input.
    struct LastStrike {
        Moment struck{};
        const void *source = nullptr;
    };
    std::array<LastStrike, 128> m_last{};
};

} // namespace tonaro
