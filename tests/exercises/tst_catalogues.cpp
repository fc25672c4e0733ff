#include "TestServices.h"

#include "exercise/ExercisePanel.h"
#include "exercise/WaitMs.h"

#include <QComboBox>
#include <QSlider>
#include <span>

// Every entry of every catalogue and every preset, against the tables the
// exercises are taught from, written out here as the notes above the root,
// the captions and the answer texts.

using namespace tonaro;
using Ints = QList<int>;

namespace {

struct Window : test::Loaded<ExercisePanel> {
    explicit Window(const QString &name, const QStringList &presses = {})
        : Loaded(name)
    {
        for (const QString &button : presses)
            press(button);
    }
    void setRoot(int item) { get<QComboBox>("Combo1")->setCurrentIndex(item); }
    // The notes sent since the last look, as semitones above root.
    QString playedAbove(int root)
    {
        QStringList steps;
        for (int note : played())
            steps << QString::number(note - root);
        clearRecords();
        return steps.join(u' ');
    }
    // Whether every note came at least 25 ms after the one before.
    bool spaced() const
    {
        const auto notes = platform.notesOn();
        return std::adjacent_find(notes.begin(), notes.end(), [](const auto &a, const auto &b) {
            return b.time - a.time < std::chrono::milliseconds(25);
        }) == notes.end();
    }
    // The indexes of the ticked boxes named prefix0, prefix1, ...
    QString ticked(const QString &prefix) const
    {
        QStringList on;
        for (int i = 0; QCheckBox *box = w->findChild<QCheckBox *>(prefix + QString::number(i)); ++i)
            if (box->isChecked())
                on << QString::number(i);
        return on.join(u' ');
    }
};

// Box caption, Reveal and the notes above the root.
using Entry = std::array<const char *, 3>;

// Each entry in turn is asked in practice mode on the list's item (-1: the
// window has no list), revealed, and played again by its own button (on the
// question's root). The row compared: box caption | Reveal | question's
// notes | button's notes.
void checkCatalogue(const QString &window, const QStringList &setup, int item, int root,
                    std::span<const Entry> rows, const QString &box, const QString &button)
{
    Window fx(window, setup);
    if (item >= 0)
        fx.setRoot(item);
    fx.press("Notest");
    const int count = int(rows.size());
    for (int i = 0; i < count; ++i) {
        // Note recognition draws its one ticked octave before the note.
        fx.random.script(item >= 0 ? std::vector{rFor(i, count)} : std::vector{0.5, rFor(i, count)});
        fx.press("New");
        const QString question = fx.playedAbove(root);
        fx.press("Reveal");
        fx.press(button + QString::number(i));
        const QStringList seen{fx.get<QCheckBox>(box + QString::number(i))->text(), fx.text("showlabel"), question,
                               fx.playedAbove(root)};
        const Entry &row = rows[std::size_t(i)];
        QCOMPARE(seen.join(" | "), QStringList({row[0], row[1], row[2], row[2]}).join(" | "));
    }
}

} // namespace

class tst_catalogues : public QObject
{
    Q_OBJECT

private slots:
    void intervals()
    {
        const Entry rows[] = {{"Unison", "Unison", "0 0"}, {"2nd minor", "2nd minor", "0 1"},
            {"2nd major", "2nd major", "0 2"}, {"3rd minor", "3rd minor", "0 3"}, {"3rd major", "3rd major", "0 4"},
            {"4th perfect", "Perfect 4th", "0 5"}, {"5th diminished", "5th diminished", "0 6"},
            {"5th perfect", "Perfect 5th", "0 7"}, {"6th minor", "6th minor", "0 8"}, {"6th major", "6th major", "0 9"},
            {"7th minor", "7th minor", "0 10"}, {"7th major", "7th major", "0 11"}, {"Octave", "Octave", "0 12"}};
        checkCatalogue("formintervalli", {"All"}, 1, 60, rows, "inter_", "playint_");
    }

    void chords()
    {
        const Entry rows[] = {{"maj", "C maj", "0 4 7"}, {"min", "C min", "0 3 7"}, {"7", "C 7", "0 4 7 10"},
            {"maj7", "C maj7", "0 4 7 11"}, {"min7", "C min7", "0 3 7 10"}, {"sus4", "C sus4", "0 5 7"},
            {"7sus4", "C 7sus4", "0 5 7 10"}, {"6", "C 6", "0 4 7 9"}, {"min6", "C min6", "0 3 7 9"},
            {"9", "C 9", "0 4 7 10 14"}, {"min9", "C min9", "0 3 7 10 14"}, {"dim", "C dim", "0 3 6"},
            {"aug", "C aug", "0 4 8"}, {"maj9", "C maj9", "0 4 7 11 14"}, {"7-5", "C 7-5", "0 4 6 10"},
            {"7+5", "C 7+5", "0 4 8 10"}, {"7+9", "C 7+9", "0 4 7 10 15"}, {"7-9", "C 7-9", "0 4 7 10 13"},
            {"11", "C 11", "0 4 7 10 14 17"}, {"13", "C 13", "0 4 7 10 14 21"}};
        checkCatalogue("Formchords", {"All"}, 1, 60, rows, "chord_", "playchord_");
    }

    void scales()
    {
        const Entry rows[] = {{"Major", "C major", "0 2 4 5 7 9 11 12"}, {"Minor", "C minor", "0 2 3 5 7 8 10 12"},
            {"Armonic Minor", "C armonic minor", "0 2 3 5 7 8 11 12"}, {"Melodic Minor", "C melodic minor", "0 2 3 5 7 9 11 12"},
            {"Major Pentatonic", "C major pentatonic", "0 2 4 7 9 12"}, {"Minor Pentatonic", "C minor pentatonic", "0 3 5 7 10 12"},
            {"Diminished", "C diminished", "0 2 3 5 6 8 9 11 12"}, {"Exatonal", "C exatonal", "0 2 4 6 8 10 12"},
            {"Cromatic", "C cromatic", "0 1 2 3 4 5 6 7 8 9 10 11 12"},
            {"Major Neapolitan", "C major neapolitan", "0 1 3 5 7 9 11 12"},
            {"Minor Neapolitan", "C minor neapolitan", "0 1 3 5 7 8 11 12"}, {"Enigmatic", "C enigmatic", "0 1 4 6 8 10 11 12"},
            {"Ungarian", "C ungarian", "0 2 3 6 7 8 11 12"}, {"Doric", "C doric", "0 2 3 5 7 9 10 12"},
            {"Frigian", "C frigian", "0 1 3 5 7 8 10 12"}, {"Lydian", "C lydian", "0 2 4 6 7 9 11 12"},
            {"Mixolydian", "C mixolydian", "0 2 4 5 7 9 10 12"}, {"Locrian", "C locrian", "0 1 3 5 6 8 10 12"}};
        checkCatalogue("Formscales", {"Allscales", "Allmodes"}, 1, 60, rows, "scales_", "playscale_");
    }

    // The triad of each degree over the tonic, as note numbers, with the
    // root an octave below ("2 roots" is ticked when the window opens).
    void harmony()
    {
        const Entry major[] = {{"I", "C maj (I)", "60 64 67 48"}, {"II", "D min (II)", "62 65 69 50"},
            {"III", "E min (III)", "64 67 71 52"}, {"IV", "F maj (IV)", "65 69 72 53"},
            {"V", "G maj (V)", "67 71 74 55"}, {"VI", "A min (VI)", "69 72 76 57"},
            {"VII", "B dim (VII)", "71 74 77 59"}};
        checkCatalogue("formarmonia", {"optmajor"}, 0, 0, major, "chord_", "playchord_");
        const Entry minor[] = {{"I", "C min (I)", "60 63 67 48"}, {"II", "D dim (II)", "62 65 68 50"},
            {"III", "D# maj (III)", "63 67 70 51"}, {"IV", "F min (IV)", "65 68 72 53"},
            {"V", "G min (V)", "67 70 74 55"}, {"VI", "G# mag (VI)", "68 72 75 56"},
            {"VII", "A# mag (VII)", "70 74 77 58"}};
        checkCatalogue("formarmonia", {"optminor"}, 0, 0, minor, "chord_", "playchord_");
    }

    // Note recognition: each pitch class asked in the 5th octave, whose
    // keys play it too.
    void melodyNotes()
    {
        const Entry rows[] = {{"C", "C ", "0"}, {"C#", "C # ", "1"}, {"D", "D ", "2"}, {"D#", "D # ", "3"},
            {"E", "E ", "4"}, {"F", "F ", "5"}, {"F#", "F # ", "6"}, {"G", "G ", "7"}, {"G#", "G # ", "8"},
            {"A", "A ", "9"}, {"A#", "A# ", "10"}, {"B", "B ", "11"}};
        checkCatalogue("formmelody", {"Command13", "Command17", "octave_4"}, -1, 60, rows, "Nota_", "tasto_");
    }

    // The boxes each preset leaves ticked, pressed after the buttons before it.
    void presets()
    {
        const QString I = "formintervalli", C = "Formchords", S = "Formscales", H = "formarmonia", M = "formmelody";
        const struct { QString window; QStringList presses; QString boxes, ticked; } rows[] = {
            {I, {}, "inter_", "0 2 4 5 7 9 11 12"}, {I, {"All"}, "inter_", "0 1 2 3 4 5 6 7 8 9 10 11 12"},
            {I, {"None"}, "inter_", ""}, {I, {"All", "mainintervals"}, "inter_", "0 2 4 5 7 9 11 12"},
            {C, {}, "chord_", "0 1 2 3 4 5 6"}, {C, {"All"}, "chord_", "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19"},
            {C, {"All", "None"}, "chord_", ""}, {C, {"All", "Triads"}, "chord_", "0 1 11 12"},
            {C, {"All", "mainbutton"}, "chord_", "0 1 2 3 4 5 6"}, {S, {}, "scales_", "0 1 2 3 4 5 6"},
            {S, {"Nonescales", "Allmodes", "Allscales"}, "scales_", "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17"},
            {S, {"Allmodes"}, "scales_", "0 1 2 3 4 5 6 13 14 15 16 17"},
            {S, {"Nonescales", "Allscales"}, "scales_", "0 1 2 3 4 5 6 7 8 9 10 11 12"},
            {S, {"Allscales", "Allmodes", "Main"}, "scales_", "0 1 2 3 4 5 6"}, {H, {}, "chord_", "0 1 2 3 4 5 6"},
            {M, {}, "Nota_", "0 2 4 5 7 9 11"}, {M, {"Command13"}, "Nota_", "0 1 2 3 4 5 6 7 8 9 10 11"},
            {M, {"Command13", "Command14"}, "Nota_", "0 2 4 5 7 9 11"}, {M, {"Command15"}, "Nota_", ""},
            {M, {}, "octave_", "3 4 5 6"}, {M, {"Command16"}, "octave_", "0 1 2 3 4 5 6 7 8 9"},
            {M, {"Command17"}, "octave_", ""}, {M, {"Command16", "Command18"}, "octave_", "3 4 5 6"},
            {M, {"Command19"}, "octave_", "2 3 4 5 6 7"}};
        for (const auto &row : rows) {
            const QString name = row.window + ' ' + row.presses.join(u' ') + ' ' + row.boxes;
            QCOMPARE(name + ": " + Window(row.window, row.presses).ticked(row.boxes), name + ": " + row.ticked);
        }
    }

    // Where the question's notes come from, apart from the entry: the
    // direction, the root list (brought into 54-65 for chords and scales)
    // and the sequence, which also decides whether the notes come apart.
    void questionNotes()
    {
        const QString I = "formintervalli", C = "Formchords", H = "formarmonia";
        const struct { QString window; QStringList setup; int item; std::vector<double> draws; Ints notes; bool apart; } rows[] = {
            {I, {"discending"}, 1, {rFor(4, 8)}, {60, 53}, true},
            {I, {"together"}, 1, {rFor(4, 8)}, {60, 67}, false},
            {I, {}, 0, {rFor(3, 8), rFor(5, 12)}, {65, 70}, true}, // a root drawn after the entry
            {C, {}, 7, {rFor(0, 7)}, {54, 58, 61}, false},
            {C, {}, 6, {rFor(0, 7)}, {65, 69, 72}, false},
            {C, {"Arpeggiooption"}, 1, {rFor(0, 7)}, {60, 64, 67}, true},
            {H, {}, 6, {rFor(0, 7)}, {54, 58, 61, 42}, false},
            {H, {"Arpeggiooption"}, 0, {rFor(0, 7)}, {60, 64, 67}, true}};
        for (const auto &row : rows) {
            const QByteArray name = (row.window + ' ' + row.setup.join(u' ') + " item " + QString::number(row.item)).toLatin1();
            Window fx(row.window, row.setup);
            fx.setRoot(row.item);
            QVERIFY2(fx.get("Frame3")->isEnabled() == row.apart, name);
            fx.w->findChildren<QSlider *>(QRegularExpression("^slider(multinotes|intervals)$")).value(0)->setValue(25);
            fx.random.script(row.draws);
            setWaitScale(1);
            fx.press("New");
            QVERIFY2(fx.played() == row.notes && fx.random.drawsMade() == int(row.draws.size()) && fx.spaced() == row.apart, name);
        }
    }
};

QTEST_MAIN(tst_catalogues)
#include "tst_catalogues.moc"
