#pragma once

namespace tonaro {

// A horizontal delay slider with its value label.
struct SliderSettings {
    const char *name;
    const char *labelName;
    int minimum;
    int maximum;
    int singleStep;
    int pageStep;
    int tickInterval;
    int startValue;
};

// Where the five exercise windows differ in the shared panel: one row of
// data per window instead of five copies of the panel's handlers.
struct PanelTraits {
    enum class ClearOnNew {
        Always,             // every New empties the verdict and the answer
        UnlessAutoNew,      // an automatic New keeps the last verdict visible
        ByWindow,           // the window empties them itself (before each note)
    };
    enum class AnswerOrder {
        RevealFirst,        // verdict, Reveal, Answers + 1, Answered, percentage, Auto NEW
        RevealAfterScore,   // verdict, Answers + 1, Answered, percentage, Reveal, Auto NEW
    };

    ClearOnNew clearOnNew = ClearOnNew::Always;
    AnswerOrder answerOrder = AnswerOrder::RevealFirst;
    bool noanswersClearsLabels = true;
    bool initEnablesAutoNew = true;
    bool letterKeys = false;                 // N, R, V, S and the window's answer letters
    double showLabelPointSize = 16.5;
    const char *rightAnswersCaptionName = "Label2";
    SliderSettings secondSlider;
};

} // namespace tonaro
