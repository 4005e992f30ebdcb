#include "tmessagebox.h"

#include "messageloggerinterface.h"

#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPointer>

namespace {

// GUI thread only, like the dialogs it replaces.
TMessageBox::AnswerProvider& answerProvider()
{
    static TMessageBox::AnswerProvider provider;
    return provider;
}

bool canShowDialogs()
{
    return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr;
}

// Runs a box modally; the box may be gone afterwards if its parent died
// while it was open.
int execBox(QMessageBox* box)
{
    QPointer<QMessageBox> guard(box);
    box->exec();
    return guard ? 1 : 0;
}

} // namespace

void TMessageBox::setAnswerProvider(AnswerProvider provider)
{
    answerProvider() = std::move(provider);
}

QMessageBox* TMessageBox::createQuestionBox(QWidget* parent, const QString& title, const QString& text,
                                            bool withCancel, int options)
{
    auto* box = new QMessageBox(parent);
    box->setIcon(QMessageBox::Question);
    box->setWindowTitle(title);
    box->setTextFormat(Qt::RichText);
    box->setText(text);
    QMessageBox::StandardButtons buttons = QMessageBox::Yes | QMessageBox::No;
    if (withCancel)
        buttons |= QMessageBox::Cancel;
    box->setStandardButtons(buttons);
    QMessageBox::StandardButton defaultButton = QMessageBox::Yes;
    if (withCancel && (options & DefaultCancel))
        defaultButton = QMessageBox::Cancel;
    else if (options & DefaultNo)
        defaultButton = QMessageBox::No;
    box->setDefaultButton(defaultButton);
    box->setEscapeButton(withCancel ? QMessageBox::Cancel : QMessageBox::No);
    return box;
}

QMessageBox* TMessageBox::createDeleteBox(QWidget* parent, const QString& text, bool offerApplyToAll)
{
    auto* box = new QMessageBox(parent);
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(tr("Confirm deletion", "Confirmer la suppression"));
    box->setTextFormat(Qt::RichText);
    box->setText(text);
    box->setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box->setDefaultButton(QMessageBox::Yes);
    box->setEscapeButton(QMessageBox::No);
    if (offerApplyToAll)
        box->setCheckBox(new QCheckBox(tr("Apply to all", "Appliquer à tous"), box));
    return box;
}

int TMessageBox::questionYesNo(QWidget* parent, const QString& title, const QString& text)
{
    if (const AnswerProvider& provider = answerProvider())
        return provider(QStringLiteral("questionYesNo"), text, nullptr) == Yes ? Yes : No;
    if (!canShowDialogs()) {
        MessageLoggerInterface::Warning(tr("No answer could be asked: %1", "Aucune réponse n'a pu être demandée : %1").arg(text));
        return No;
    }
    QMessageBox* box = createQuestionBox(parent, title, text, false);
    int answer = No;
    if (execBox(box))
        answer = box->clickedButton() == box->button(QMessageBox::Yes) ? Yes : No;
    delete box;
    return answer;
}

int TMessageBox::questionYesNoCancel(QWidget* parent, const QString& title, const QString& text, int options)
{
    if (const AnswerProvider& provider = answerProvider()) {
        const int answer = provider(QStringLiteral("questionYesNoCancel"), text, nullptr);
        return (answer == Yes || answer == No) ? answer : Cancel;
    }
    if (!canShowDialogs()) {
        MessageLoggerInterface::Warning(tr("No answer could be asked: %1", "Aucune réponse n'a pu être demandée : %1").arg(text));
        return Cancel;
    }
    QMessageBox* box = createQuestionBox(parent, title, text, true, options);
    int answer = Cancel;
    if (execBox(box)) {
        QAbstractButton* clicked = box->clickedButton();
        if (clicked == box->button(QMessageBox::Yes))
            answer = Yes;
        else if (clicked == box->button(QMessageBox::No))
            answer = No;
    }
    delete box;
    return answer;
}

int TMessageBox::askForDelete(QWidget* parent, const QString& text, bool offerApplyToAll, bool* applyToAll)
{
    bool ticked = false;
    int answer = No;
    if (const AnswerProvider& provider = answerProvider()) {
        answer = provider(QStringLiteral("askForDelete"), text, offerApplyToAll ? &ticked : nullptr) == Yes ? Yes : No;
    } else if (!canShowDialogs()) {
        MessageLoggerInterface::Warning(tr("No answer could be asked: %1", "Aucune réponse n'a pu être demandée : %1").arg(text));
    } else {
        QMessageBox* box = createDeleteBox(parent, text, offerApplyToAll);
        if (execBox(box)) {
            answer = box->clickedButton() == box->button(QMessageBox::Yes) ? Yes : No;
            ticked = box->checkBox() && box->checkBox()->isChecked();
        }
        delete box;
    }
    if (applyToAll)
        *applyToAll = offerApplyToAll && ticked;
    return answer;
}
