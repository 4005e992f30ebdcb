#pragma once

#include "kabrowser_export.h"
#include "tprocessprogressinterface.h"

#include <QProgressBar>

// Shows the progress of the projects being loaded for a search.
class KABROWSER_EXPORT KAStackedBrowserSearchProgressBar : public QProgressBar, public TProcessProgressInterface
{
    Q_OBJECT
public:
    explicit KAStackedBrowserSearchProgressBar(QWidget* parent = nullptr);
    void startProcess(int steps, const QString& title = QString(), const QString& text = QString()) override;
    void advanceProcess(int steps = 1) override;
    void endProcess() override;
};
