#pragma once

#include "shell/MessageBoxes.h"

#include <QStringList>
#include <vector>

namespace tonaro {

// Keeps every box shown and answers questions from a script (Yes when the
// script is empty).
class RecordingMessageBoxes : public MessageBoxes
{
public:
    struct Box {
        QString title;
        QString text;
    };

    void message(QWidget *parent, const QString &text) override;
    bool question(QWidget *parent, const QString &title, const QString &text) override;

    void scriptAnswers(std::vector<bool> answers) { m_answers = std::move(answers); }
    const std::vector<Box> &boxes() const { return m_boxes; }
    QStringList texts() const;
    void clear() { m_boxes.clear(); }

private:
    std::vector<Box> m_boxes;
    std::vector<bool> m_answers;
};

} // namespace tonaro
