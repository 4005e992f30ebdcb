#pragma once

#include "kabrowser_export.h"
#include "kafilesystembrowserctrl.h"

#include <QList>
#include <QMap>

class KAObject2Analysis;
class KAObject2PeakDetect;
class KAObject2Project;

// A file-system explorer that shows, under each project, only what the
// compounds of the project databases lead to: the analyses and, under each,
// the peak detections that compounds list. The content of the projects of a
// folder is gathered in one pass when the folder is listed.
class KABROWSER_EXPORT RVFileSystemBrowserCtrl : public KAFileSystemBrowserCtrl
{
    Q_OBJECT
public:
    using AnalysisMap = QMap<const KAObject2Project*, QList<const KAObject2Analysis*>>;
    using PeakDetectMap = QMap<const KAObject2Analysis*, QList<const KAObject2PeakDetect*>>;

    explicit RVFileSystemBrowserCtrl(const QString& name);
    ~RVFileSystemBrowserCtrl() override;

    // The analyses each project's compounds lead to, and their detections.
    // A project that is not open is opened silently first, as expanding it
    // in the explorer would.
    void getProjectsContent(const QList<const KAObject2Project*>& projects, AnalysisMap& analyses,
                            PeakDetectMap& peakDetects);
    // One content tree per project of the list that has analyses; the nodes
    // hold the objects without owning them. The caller owns the trees.
    QMap<const KAObject2Project*, Node*> createTreeView(const QList<const KAObject2Project*>& projects,
                                                        const AnalysisMap& analyses,
                                                        const PeakDetectMap& peakDetects);

    QList<Node*> createProjectNodes(const QList<QFileInfo>& folders) override;

protected:
    // The content goes; a placeholder fills the node again when expanded.
    void foldProjectNode(Node* node) override;

private:
    void fillTree(Node* node) override;
    void fillNodeOnExpand(Node* node) override;
    // Replaces a project node's placeholder by the project's content; false
    // when the node is not such a node.
    bool fillProjectNode(Node* node);
};
