#include "PianoKeyboard.h"

#include "AnswerMarks.h"
#include "PianoKey.h"

#include <QPainter>

namespace tonaro {

namespace {

constexpr int WhiteKeyCount = 7;
constexpr int MaxWhiteKeyWidth = 46;
constexpr int MinWhiteKeyWidth = 26;
constexpr int LidHeight = 8;
// A black key's width and length as a share of a white key's.
constexpr double BlackWidthShare = 0.6;
constexpr double BlackLengthShare = 0.6;

// The white key each black key starts behind (C# behind C, and so on); the
// black keys of C#/D# and F#/G#/A# lean apart a little, as on a real piano.
struct BlackKeyPlace {
    int pitchClass;
    int whiteKeyBefore;
    double offset; // share of a black key's width, from the centred place
};
constexpr std::array<BlackKeyPlace, 5> BlackKeyPlaces{{
    {1, 0, -0.15}, {3, 1, 0.15}, {6, 3, -0.2}, {8, 4, 0.0}, {10, 5, 0.2}}};

} // namespace

PianoKeyboard::PianoKeyboard(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("pianokeyboard"));
    setFixedHeight(KeyboardHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    for (int k = 0; k < melody::PitchClassCount; ++k) {
        const bool black = melody::isBlackKey(k);
        auto *key = new PianoKey(black, this);
        key->setObjectName(QStringLiteral("tasto_%1").arg(k));
        if (black)
            key->setText(QLatin1String(melody::KeyCaptions[std::size_t(k)]));
        const QString spoken = QLatin1String(melody::SpokenNames[std::size_t(k)]);
        key->setAccessibleName(spoken);
        // The letter that plays the key, with Ctrl for the sharps.
        const QChar letter = QLatin1Char(melody::KeyCaptions[std::size_t(k)][0]);
        key->setToolTip(QStringLiteral("%1 (%2%3)").arg(spoken, black ? QStringLiteral("Ctrl+") : QString(), letter));
        m_keys[std::size_t(k)] = key;
    }
    // Black keys lie over the white ones and take the clicks there.
    for (PianoKey *key : m_keys) {
        if (key->isBlack())
            key->raise();
    }
    m_marks = new AnswerMarks(m_keys, this);
}

void PianoKeyboard::showAnswer(std::span<const int> notes)
{
    m_marks->show(notes);
}

void PianoKeyboard::clearAnswer()
{
    m_marks->clear();
}

const std::array<QString, melody::PitchClassCount> &PianoKeyboard::answerMarks() const
{
    return m_marks->marks();
}

QSize PianoKeyboard::sizeHint() const
{
    return {WhiteKeyCount * MaxWhiteKeyWidth + 2, KeyboardHeight};
}

QSize PianoKeyboard::minimumSizeHint() const
{
    return {WhiteKeyCount * MinWhiteKeyWidth + 2, KeyboardHeight};
}

QRect PianoKeyboard::keyboardRect() const
{
    const int whiteWidth = std::clamp(width() / WhiteKeyCount, MinWhiteKeyWidth, MaxWhiteKeyWidth);
    const int total = whiteWidth * WhiteKeyCount;
    return {(width() - total) / 2, 0, total, height()};
}

void PianoKeyboard::resizeEvent(QResizeEvent *)
{
    m_marks->setGeometry(rect());
    placeKeys();
}

void PianoKeyboard::placeKeys()
{
    const QRect board = keyboardRect();
    const int whiteWidth = board.width() / WhiteKeyCount;
    const int keyTop = board.top() + LidHeight;
    const int whiteHeight = board.height() - LidHeight;
    int white = 0;
    for (int k = 0; k < melody::PitchClassCount; ++k) {
        if (!melody::isBlackKey(k)) {
            m_keys[std::size_t(k)]->setGeometry(board.left() + white * whiteWidth, keyTop, whiteWidth + 1, whiteHeight);
            ++white;
        }
    }
    const int blackWidth = int(whiteWidth * BlackWidthShare);
    const int blackHeight = int(whiteHeight * BlackLengthShare);
    for (const BlackKeyPlace &place : BlackKeyPlaces) {
        const int gap = board.left() + (place.whiteKeyBefore + 1) * whiteWidth;
        const int left = gap - blackWidth / 2 + int(place.offset * blackWidth);
        m_keys[std::size_t(place.pitchClass)]->setGeometry(left, keyTop, blackWidth, blackHeight);
    }
}

void PianoKeyboard::paintEvent(QPaintEvent *)
{
    // The lid behind the keys, with a felt strip along its edge.
    QPainter painter(this);
    const QRect board = keyboardRect();
    painter.fillRect(QRect(board.left(), board.top(), board.width() + 1, LidHeight + 2), QColor(40, 30, 28));
    painter.fillRect(QRect(board.left(), board.top() + LidHeight - 2, board.width() + 1, 2), QColor(150, 20, 30));
}

} // namespace tonaro
