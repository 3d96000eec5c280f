#include "screens/base/row_list.h"

#include <QMetaProperty>

namespace marlet {

RowListBase::RowListBase(const QMetaObject& gadget, QObject* parent)
    : QAbstractListModel(parent), gadget_(gadget) {}

QVariant RowListBase::data(const QModelIndex& index, int role) const {
    const int property = role - Qt::UserRole;
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || property < 0 ||
        property >= gadget_.propertyCount())
        return {};
    return gadget_.property(property).readOnGadget(gadgetAt(index.row()));
}

QHash<int, QByteArray> RowListBase::roleNames() const {
    QHash<int, QByteArray> names;
    for (int property = 0; property < gadget_.propertyCount(); ++property)
        names.insert(Qt::UserRole + property, gadget_.property(property).name());
    return names;
}

}  // namespace marlet
