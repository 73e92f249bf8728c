#include "PropertyForm.h"

PropertyForm::PropertyForm(ProjectDocument* document, Owner owner, QWidget* parent)
    : QWidget(parent)
    , document(document)
    , ownerOf(std::move(owner))
    , layout(new QFormLayout(this))
{
    layout->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    layout->setContentsMargins(4, 4, 4, 4);
}

void PropertyForm::refresh()
{
    for (const auto& step : refreshers)
        step();
}

QLineEdit* PropertyForm::addName()
{
    auto* edit = new QLineEdit;
    connect(edit, &QLineEdit::editingFinished, this, [this, edit] {
        const RecordRef record = ownerOf();
        if (!record.isNull() && edit->text() != QString::fromStdString(record.name()))
            ProjectEdits::rename(*document, record, edit->text());
        // The store may have made the name unique.
        edit->setText(QString::fromStdString(ownerOf().name()));
    });
    // Refreshes come from commands, which the user starts elsewhere: the
    // field always follows the record it shows.
    refreshers.push_back([this, edit] { edit->setText(QString::fromStdString(ownerOf().name())); });
    layout->addRow(tr("Name"), edit);
    return edit;
}

QCheckBox* PropertyForm::addCheck(const QString& label, std::function<bool*()> field)
{
    auto* check = new QCheckBox(label);
    connect(check, &QCheckBox::toggled, this, [this, field, label](bool value) {
        if (bool* target = field())
            ProjectEdits::setField(*document, ownerOf(), *target, value, QStringLiteral("Set ") + label);
    });
    refreshers.push_back([check, field] {
        const QSignalBlocker blocker(check);
        bool* target = field();
        check->setEnabled(target != nullptr);
        check->setChecked(target && *target);
    });
    layout->addRow(QString(), check);
    return check;
}

QDoubleSpinBox* PropertyForm::addFloat(const QString& label, std::function<float*()> field, double minimum,
                                       double maximum, int decimals, Problem problem)
{
    auto* spin = new QDoubleSpinBox;
    spin->setRange(minimum, maximum);
    spin->setDecimals(decimals);
    spin->setKeyboardTracking(false);
    connect(spin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this, field, label](double value) {
        if (float* target = field())
            ProjectEdits::setField(*document, ownerOf(), *target, float(value), QStringLiteral("Set ") + label, true);
    });
    refreshers.push_back([spin, field] {
        const QSignalBlocker blocker(spin);
        float* target = field();
        spin->setEnabled(target != nullptr);
        if (target)
            spin->setValue(double(*target));
    });
    layout->addRow(label, withProblem(spin, problem));
    return spin;
}

QWidget* PropertyForm::withProblem(QWidget* field, Problem problem)
{
    if (!problem)
        return field;
    auto* row = new QWidget;
    auto* box = new QHBoxLayout(row);
    box->setContentsMargins(0, 0, 0, 0);
    box->addWidget(field, 1);
    auto* note = new QLabel;
    note->setStyleSheet(QStringLiteral("color: rgb(255, 80, 80);"));
    note->setWordWrap(true);
    box->addWidget(note, 2);
    refreshers.push_back([note, problem] {
        const QString text = problem();
        note->setText(text);
        note->setVisible(!text.isEmpty());
    });
    return row;
}
