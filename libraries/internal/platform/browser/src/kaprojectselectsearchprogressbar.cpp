#include "kaprojectselectsearchprogressbar.h"

KAProjectSelectSearchProgressBar::KAProjectSelectSearchProgressBar(QWidget* parent)
    : QProgressBar(parent)
{
    setAlignment(Qt::AlignHCenter);
    setFormat(tr("Loading projects ...", "Chargement des projets ..."));
}

void KAProjectSelectSearchProgressBar::startProcess(int steps, const QString&, const QString&)
{
    setMaximum(steps);
    setValue(0);
    show();
}

void KAProjectSelectSearchProgressBar::advanceProcess(int steps)
{
    setValue(value() + steps);
}

void KAProjectSelectSearchProgressBar::endProcess()
{
    reset();
    hide();
}
