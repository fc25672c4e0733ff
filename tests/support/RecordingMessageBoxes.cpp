#include "RecordingMessageBoxes.h"

namespace tonaro {

void RecordingMessageBoxes::message(QWidget *, const QString &text)
{
    m_boxes.push_back({ApplicationTitle, text});
}

bool RecordingMessageBoxes::question(QWidget *, const QString &title, const QString &text)
{
    m_boxes.push_back({title, text});
    if (m_answers.empty())
        return true;
    const bool answer = m_answers.front();
    m_answers.erase(m_answers.begin());
    return answer;
}

QStringList RecordingMessageBoxes::texts() const
{
    QStringList result;
    for (const Box &box : m_boxes)
        result << box.text;
    return result;
}

} // namespace tonaro
