#pragma once

#include "kahost_export.h"

#include <QDialog>
#include <QList>
#include <QVector>

class KAObject2Project;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;

// Edits the name, description and state of one or several projects. With
// several, a list on the left picks the project the fields show; edits of
// every project are kept until OK. OK refuses an empty name, then saves each
// changed project through its database (a closed project is opened for the
// write and closed again) and updates the project object. A refused write
// (read-only or locked database) is reported and the dialog stays open on
// that project; projects saved before it stay saved.
class KAHOST_EXPORT KAProjectDialog : public QDialog
{
    Q_OBJECT
public:
    // The projects are the project manager's (not owned).
    KAProjectDialog(const QList<const KAObject2Project*>& projects, QWidget* parent);
    ~KAProjectDialog() override;

    // The project the fields show (index in the list given), -1 for none.
    int currentProject() const { return m_current; }
    void setCurrentProject(int index);
    // The refusal shown in the dialog, empty when there is none.
    QString message() const;

    // The readable name of a project state, and the states in menu order.
    static QString stateName(int state);
    static QList<int> states();

public slots:
    void accept() override;

private:
    struct Edit {
        QString name;
        QString description;
        int state = 0;
    };

    void buildFields(QWidget* parent);
    void loadFields(int index);
    void storeFields();
    void markList(int index);
    bool isChanged(int index) const;
    bool save(int index);
    void showMessage(const QString& html);

    QList<const KAObject2Project*> m_projects; // not owned: the project manager's
    QVector<Edit> m_edits;                     // pending edits, one per project
    int m_current = -1;
    bool m_loading = false;                    // the fields are being filled, not edited
    QListWidget* m_list = nullptr;             // owned through Qt parenthood; null for one project
    QLineEdit* m_name = nullptr;               // owned through Qt parenthood
    QPlainTextEdit* m_description = nullptr;   // owned through Qt parenthood
    QComboBox* m_state = nullptr;              // owned through Qt parenthood
    QLineEdit* m_folder = nullptr;             // owned through Qt parenthood
    QLabel* m_messageIcon = nullptr;           // owned through Qt parenthood
    QLabel* m_message = nullptr;               // owned through Qt parenthood
};
