#pragma once

#include "shell/MessageBoxes.h"

#include <QStringList>
#include <vector>

namespace tonaro {

// Keeps every box shown and answers every question Yes.
class RecordingMessageBoxes : public MessageBoxes
{
public:
    struct Box {
        QString title;
        QString text;
    };

    void message(QWidget *, const QString &text) override { m_boxes.push_back({ApplicationTitle, text}); }
    bool question(QWidget *, const QString &title, const QString &text) override
    {
        m_boxes.push_back({title, text});
        return true;
    }

    const std::vector<Box> &boxes() const { return m_boxes; }
    QStringList texts() const
    {
        QStringList result;
        for (const Box &box : m_boxes)
            result << box.text;
        return result;
    }
    void clear() { m_boxes.clear(); }

private:
    std::vector<Box> m_boxes;
};

} // namespace tonaro
