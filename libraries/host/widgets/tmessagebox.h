#pragma once

#include "kahost_export.h"

#include <QCoreApplication>
#include <QString>

#include <functional>

class QMessageBox;
class QWidget;

// The host's questions. Each shows a modal QMessageBox with rich text (the
// caller escapes the names it puts in) and returns the answer as a number.
//
// An answer provider, when set, replaces the dialogs: it is told the kind of
// question ("questionYesNo", "questionYesNoCancel", "askForDelete") and its
// text, and returns the answer a person would give. For askForDelete with
// the apply-to-all box offered it also receives a non-null flag to tick;
// otherwise that pointer is null. Used by tests and scripted runs.
class KAHOST_EXPORT TMessageBox
{
    Q_DECLARE_TR_FUNCTIONS(TMessageBox)
public:
    enum Answer { Yes = 0, No = 1, Cancel = 2 };
    // Options of questionYesNoCancel: which button Enter presses (Yes when
    // none is given).
    enum Option { DefaultNo = 0x1, DefaultCancel = 0x2 };

    using AnswerProvider = std::function<int(const QString& kind, const QString& text, bool* applyToAll)>;

    // 0 yes, 1 no (also when the box is closed).
    static int questionYesNo(QWidget* parent, const QString& title, const QString& text);
    // 0 yes, 1 no, 2 cancel (also when the box is closed).
    static int questionYesNoCancel(QWidget* parent, const QString& title, const QString& text, int options = 0);
    // 0 yes, 1 no (also when the box is closed). The "Apply to all" box is
    // shown only when offerApplyToAll; *applyToAll (may be null) receives
    // its state, false when it was not shown.
    static int askForDelete(QWidget* parent, const QString& text, bool offerApplyToAll, bool* applyToAll);

    // An empty function brings the dialogs back.
    static void setAnswerProvider(AnswerProvider provider);

    // The dialogs themselves, not shown; the caller owns them. The
    // questions above run them modally.
    static QMessageBox* createQuestionBox(QWidget* parent, const QString& title, const QString& text,
                                          bool withCancel, int options = 0);
    static QMessageBox* createDeleteBox(QWidget* parent, const QString& text, bool offerApplyToAll);
};
