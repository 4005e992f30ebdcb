#pragma once

#include "kabrowser_export.h"
#include "tprocessprogressinterface.h"

#include <QProgressBar>

// Shows the progress of the projects being loaded in the project selection.
class KABROWSER_EXPORT KAProjectSelectSearchProgressBar : public QProgressBar, public TProcessProgressInterface
{
    Q_OBJECT
public:
    explicit KAProjectSelectSearchProgressBar(QWidget* parent = nullptr);
    void startProcess(int steps, const QString& title = QString(), const QString& text = QString()) override;
    void advanceProcess(int steps = 1) override;
    void endProcess() override;
};
