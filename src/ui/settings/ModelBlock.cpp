#include "ui/settings/ModelBlock.h"

#include "app/SettingsModel.h"
#include "store/SettingsStore.h"
#include "ui/controls/MenuPicker.h"
#include "ui/controls/NoteLabel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

ModelBlock::ModelBlock(SettingsStore &settings, SettingsModel &model, QWidget *parent)
    : QWidget(parent), m_settings(settings), m_model(model), m_label(new QLabel(u"Model"_s)),
      m_models(new MenuPicker({})), m_nameLabel(new QLabel), m_name(new QLineEdit),
      m_reset(new QPushButton(u"Reset"_s)), m_status(new NoteLabel({}))
{
    m_label->setBuddy(m_models);
    m_nameLabel->setBuddy(m_name);
    m_reset->setAccessibleName(u"Reset model to default"_s);
    addRows();
    connect(m_models, &MenuPicker::chosen, this, &ModelBlock::choose);
    connect(m_name, &QLineEdit::textEdited, &model, &SettingsModel::typeModel);
    connect(m_reset, &QPushButton::clicked, this, [this] {
        m_model.resetModel();
        // The button is gone now, and the focus should not be.
        m_models->setFocus();
    });
    connect(&model, &SettingsModel::displayedModelsChanged, this, &ModelBlock::showModels);
    connect(&model, &SettingsModel::changed, this, &ModelBlock::refresh);
    showModels();
    refresh();
}

void ModelBlock::addRows()
{
    auto *nameRow = new QHBoxLayout;
    nameRow->addWidget(m_name, 1);
    nameRow->addWidget(m_reset);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(m_label);
    rows->addWidget(m_models);
    rows->addWidget(m_nameLabel);
    rows->addLayout(nameRow);
    rows->addWidget(m_status);
    rows->addWidget(
        new NoteLabel(u"Pick a model from the full list, or choose Custom and type one below."_s));
}

void ModelBlock::choose(const QString &tag)
{
    m_model.selectModel(tag);
    if (m_model.isCustomSelected()) {
        m_name->setFocus();
        m_name->selectAll();
    }
}

void ModelBlock::showModels()
{
    QList<PickerChoice> choices;
    choices.reserve(m_model.displayedModels().size() + 1);
    for (const ProviderModel &model : m_model.displayedModels())
        choices.append({model.name, model.name, model.isFree.value_or(false) ? u"free"_s : QString()});
    choices.append(
        {u"Custom"_s, QString::fromLatin1(SettingsModel::customTag), {}, PickerChoice::Search::always});
    m_models->setChoices(choices);
    refresh();
}

void ModelBlock::refresh()
{
    const ProviderID provider = m_settings.providerID();
    const bool custom = m_model.isCustomSelected();
    const bool hasList = provider != ProviderID::custom || !m_model.displayedModels().isEmpty();
    m_models->select(m_model.modelSelection());
    m_models->setAccessibleName(u"Model for "_s + displayName(provider));
    m_label->setVisible(hasList);
    m_models->setVisible(hasList);

    const QString title = hasList ? u"Custom model name"_s : u"Model name on your server"_s;
    m_nameLabel->setText(title);
    m_nameLabel->setVisible(custom || !hasList);
    m_name->setAccessibleName(title);
    m_name->setPlaceholderText(hasList ? u"Or type a custom model name"_s : title);
    m_name->setVisible(custom || !hasList);
    if (m_name->text() != m_settings.model())
        m_name->setText(m_settings.model());
    m_reset->setVisible(custom && hasList);
    m_status->setText(m_model.listStatus());
}

} // namespace morvane
