#include "kastackedbrowsersearchprogressbar.h"

KAStackedBrowserSearchProgressBar::KAStackedBrowserSearchProgressBar(QWidget* parent)
    : QProgressBar(parent)
{
    setAlignment(Qt::AlignHCenter);
    setFormat(tr("Loading projects ...", "Chargement des projets ..."));
}

void KAStackedBrowserSearchProgressBar::startProcess(int steps, const QString&, const QString&)
{
    setMaximum(steps);
    setValue(0);
    show();
}

void KAStackedBrowserSearchProgressBar::advanceProcess(int steps)
{
    setValue(value() + steps);
}

void KAStackedBrowserSearchProgressBar::endProcess()
{
    reset();
    hide();
}
