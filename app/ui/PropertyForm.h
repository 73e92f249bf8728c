#pragma once

#include "ProjectDocument.h"
#include "ProjectEdits.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QWidget>

#include <functional>
#include <limits>
#include <vector>

// A form whose rows are bound to fields of the record a panel shows. Each
// row reads its field on refresh() and turns the user's change into an undo
// command through ProjectEdits; a field getter returns null while there is
// nothing to show. Rows may carry a check that is shown in red beside them.
class PropertyForm : public QWidget
{
    Q_OBJECT
public:
    using Owner = std::function<RecordRef()>;
    using Problem = std::function<QString()>;

    PropertyForm(ProjectDocument* document, Owner owner, QWidget* parent = nullptr);

    // Rereads every field.
    void refresh();

    QLineEdit* addName();
    QCheckBox* addCheck(const QString& label, std::function<bool*()> field);

    template <class T>
    QSpinBox* addInt(const QString& label, std::function<T*()> field, int minimum, int maximum,
                     Problem problem = Problem());
    QDoubleSpinBox* addFloat(const QString& label, std::function<float*()> field, double minimum, double maximum,
                             int decimals, Problem problem = Problem());

    // A choice among the records of one list, "(none)" first; `beside` (a
    // button, say) shares its row.
    template <class Record>
    QComboBox* addRecordChoice(const QString& label, std::function<Record**()> field,
                               std::function<bool(const Record*)> allowed = nullptr, QWidget* beside = nullptr);

    void addRow(const QString& label, QWidget* widget) { layout->addRow(label, widget); }
    void addWidget(QWidget* widget) { layout->addRow(widget); }
    // Adds a refresh step of the panel's own.
    void onRefresh(std::function<void()> step) { refreshers.push_back(std::move(step)); }

    ProjectDocument* projectDocument() const { return document; }
    RecordRef owner() const { return ownerOf(); }

private:
    // The field widget with its problem label beside it.
    QWidget* withProblem(QWidget* field, Problem problem);

    ProjectDocument* document;
    Owner ownerOf;
    QFormLayout* layout;
    std::vector<std::function<void()>> refreshers;
};

template <class T>
QSpinBox* PropertyForm::addInt(const QString& label, std::function<T*()> field, int minimum, int maximum,
                               Problem problem)
{
    auto* spin = new QSpinBox;
    spin->setRange(minimum, maximum);
    spin->setKeyboardTracking(false);
    connect(spin, QOverload<int>::of(&QSpinBox::valueChanged), this, [this, field, label](int value) {
        if (T* target = field())
            ProjectEdits::setField(*document, ownerOf(), *target, T(value), QStringLiteral("Set ") + label, true);
    });
    refreshers.push_back([spin, field] {
        const QSignalBlocker blocker(spin);
        T* target = field();
        spin->setEnabled(target != nullptr);
        if (target)
            spin->setValue(int(*target));
    });
    layout->addRow(label, withProblem(spin, problem));
    return spin;
}

template <class Record>
QComboBox* PropertyForm::addRecordChoice(const QString& label, std::function<Record**()> field,
                                         std::function<bool(const Record*)> allowed, QWidget* beside)
{
    auto* combo = new QComboBox;
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    combo->setMinimumContentsLength(8);
    connect(combo, QOverload<int>::of(&QComboBox::activated), this, [this, combo, field, label](int row) {
        Record** target = field();
        if (!target)
            return;
        Record* chosen = static_cast<Record*>(combo->itemData(row).value<void*>());
        ProjectEdits::setField(*document, ownerOf(), *target, chosen, QStringLiteral("Set ") + label);
    });
    refreshers.push_back([this, combo, field, allowed] {
        const QSignalBlocker blocker(combo);
        combo->clear();
        combo->addItem(QStringLiteral("(none)"), QVariant::fromValue<void*>(nullptr));
        Record** target = field();
        combo->setEnabled(target != nullptr);
        for (const auto& record : RecordList<Record>::of(document->store()))
            if (!allowed || allowed(record.get()))
                combo->addItem(QString::fromStdString(record->name), QVariant::fromValue<void*>(record.get()));
        combo->setCurrentIndex(target ? std::max(0, combo->findData(QVariant::fromValue<void*>(*target))) : 0);
    });
    if (!beside) {
        layout->addRow(label, combo);
        return combo;
    }
    auto* row = new QWidget;
    auto* box = new QHBoxLayout(row);
    box->setContentsMargins(0, 0, 0, 0);
    box->addWidget(combo, 1);
    box->addWidget(beside);
    layout->addRow(label, row);
    return combo;
}
