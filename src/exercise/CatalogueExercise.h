#pragma once

#include "Catalogue.h"
#include "ExercisePanel.h"
#include "NoteRow.h"
#include "PlayedAnswer.h"

#include <initializer_list>
#include <span>
#include <vector>

class QComboBox;
class QHBoxLayout;
class QRadioButton;

namespace tonaro {

class PlayedNotes;

// How a window shows its catalogue: the frame, the names of its two control
// arrays, and how the rows fall into columns.
struct CatalogueView {
    const char *frameCaption;
    const char *boxName;       // check boxes: boxName_0, boxName_1, ...
    const char *buttonName;    // play buttons: buttonName_0, ...
    int rowsPerColumn;
    int rowHeight;             // pixels; 0 keeps the check boxes' own height
};

// The shape that the interval, chord, scale and harmony windows share: a
// catalogue whose index is at once a check box, a play button and a Reveal
// name. New draws one of the ticked entries; a play button answers in test
// mode and plays its entry in practice mode. The window supplies its table
// and what is its own: how a question is built from an entry and played, and
// what a practice click plays.
class CatalogueExercise : public ExercisePanel
{
    Q_OBJECT

public:
    CatalogueExercise(const Services &services, const PanelTraits &traits,
                      std::span<const CatalogueEntry> catalogue, std::span<const CataloguePreset> presets,
                      const CatalogueView &view, QWidget *parent);

    void New_Click() final;
    void Repeat_Click() final;
    void play_Click(int index);

protected:
    // Stores the question on the drawn entry (drawing its root where the window does).
    virtual void makeQuestion(int index) = 0;
    // Plays the stored question; false when the window went away meanwhile,
    // and then the caller touches nothing more.
    virtual bool playQuestion() = 0;
    virtual void practise(int index) = 0;
    virtual int questionIndex() const = 0;

    // How notes played on a MIDI keyboard answer in this window. They answer
    // in test mode only: in practice mode the buttons play, they do not answer.
    void readPlayedNotesAs(PlayedAnswer::Gesture gesture, PlayedAnswer::Reader reader);
    void playedNote(int note, MidiInput::Moment struck) override;
    void onReset() override;

    const CatalogueEntry &entry(int index) const { return m_catalogue[std::size_t(index)]; }
    QCheckBox *box(int index) const { return m_boxes[std::size_t(index)]; }
    std::vector<int> tickedEntries() const;
    void applyPreset(const CataloguePreset &preset);

    // Combo1: "Random" (unless withRandom is false) and "Fixed C" to "Fixed B".
    // It takes no typed text: only the item's index means anything.
    QComboBox *makeRootList(bool withRandom);
    QComboBox *rootList() const { return m_rootList; }
    // The root the list stands for now, 60 to 71 (drawn with "Random").
    int listRoot();
    // The root of a practice playback: the question's once there is one,
    // else the list's. With "Random" a root is drawn either way.
    int practiceRoot(int questionRoot);

    // The label (named labelName) and the root list, side by side.
    QHBoxLayout *makeRootRow(const char *labelName);

    // Frame3, holding the second slider and its value label.
    QGroupBox *makeSliderFrame(const QString &caption, bool labelBelow);

    static QRadioButton *makeOption(const QString &caption, const char *name, QWidget *frame);
    // Lays out the window's column: the catalogue frame on top, then the
    // given widgets and layouts in order, then the stretch that keeps them up.
    // A window whose catalogue is long puts the rest under the panel
    // instead, so that it keeps its designed height.
    void stackColumn(int spacing, std::initializer_list<QObject *> parts,
                     std::initializer_list<QObject *> underPanel = {});

    void playNote(int note);
    // The notes in order; withGaps waits the second slider's time after every
    // note, the last included, reading the slider anew each time and
    // processing no events, so the window stays deaf until the end.
    bool playNotes(NoteRow row, bool withGaps);

private:
    void buildCatalogueFrame(const CatalogueView &view);

    std::span<const CatalogueEntry> m_catalogue;
    std::span<const CataloguePreset> m_presets;
    std::vector<QCheckBox *> m_boxes;
    QGroupBox *m_frame = nullptr;
    QComboBox *m_rootList = nullptr;
    PlayedNotes *m_played = nullptr;
};

} // namespace tonaro
