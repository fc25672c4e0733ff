#pragma once

#include <QString>
#include <QStringList>
#include <vector>

class QWidget;

namespace tonaro {

// The program's two kinds of message box, behind one seam so that tests
// record them and answer the exit question without blocking.
class MessageBoxes
{
public:
    static inline const QString ApplicationTitle = QStringLiteral("tonaro12");

    virtual ~MessageBoxes() = default;

    // OK only, no icon, titled with the application title; returns when closed.
    virtual void message(QWidget *parent, const QString &text) = 0;
    // Yes and No, exclamation icon, Yes the default. True for Yes.
    virtual bool question(QWidget *parent, const QString &title, const QString &text) = 0;
};

class QtMessageBoxes : public MessageBoxes
{
public:
    void message(QWidget *parent, const QString &text) override;
    bool question(QWidget *parent, const QString &title, const QString &text) override;
};

// Keeps every box shown and answers questions from a script (Yes when the
// script is empty).
class RecordingMessageBoxes : public MessageBoxes
{
public:
    struct Box {
        QString title;
        QString text;
        bool isQuestion = false;
    };

    void message(QWidget *parent, const QString &text) override;
    bool question(QWidget *parent, const QString &title, const QString &text) override;

    void scriptAnswers(std::vector<bool> answers) { m_answers = std::move(answers); }
    const std::vector<Box> &boxes() const { return m_boxes; }
    QStringList texts() const;
    int count(const QString &text) const;
    void clear() { m_boxes.clear(); }

private:
    std::vector<Box> m_boxes;
    std::vector<bool> m_answers;
};

} // namespace tonaro
