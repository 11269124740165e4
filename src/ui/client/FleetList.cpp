// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "client/FleetList.h"

#include <algorithm>

namespace velmora {

namespace {

using Row = FleetList::Row;

constexpr QString Row::*columns[] = {&Row::identifier, &Row::name,   &Row::status,
                                     &Row::battery,    &Row::symbol, &Row::tint};
const char* const names[] = {"identifier", "name", "status", "battery", "symbol", "tint"};

} // namespace

void FleetList::assign(const QList<Row>& rows)
{
    removeAllBut(rows);
    for (int index = 0; index < rows.size(); ++index) place(index, rows[index]);
    if (rows_.size() == rows.size()) return;
    beginRemoveRows({}, int(rows.size()), int(rows_.size()) - 1);
    rows_.resize(rows.size());
    endRemoveRows();
}

void FleetList::removeAllBut(const QList<Row>& rows)
{
    for (int index = int(rows_.size()) - 1; index >= 0; --index) {
        if (std::ranges::find(rows, rows_[index].identifier, &Row::identifier) != rows.end()) continue;
        beginRemoveRows({}, index, index);
        rows_.removeAt(index);
        endRemoveRows();
    }
}

/// The rows before `index` are right already.
void FleetList::place(int index, const Row& row)
{
    const bool isKnown = index < rows_.size() && rows_[index].identifier == row.identifier;
    if (isKnown && rows_[index] == row) return;
    if (isKnown) {
        rows_[index] = row;
        Q_EMIT dataChanged(this->index(index), this->index(index));
        return;
    }
    beginInsertRows({}, index, index);
    rows_.insert(index, row);
    endInsertRows();
}

QVariant FleetList::data(const QModelIndex& index, int role) const
{
    const int column = role - Qt::UserRole;
    const bool isThere = index.isValid() && index.row() < rows_.size();
    if (!isThere || column < 0 || column >= int(std::size(columns))) return {};
    return rows_[index.row()].*columns[column];
}

QHash<int, QByteArray> FleetList::roleNames() const
{
    QHash<int, QByteArray> roles;
    for (int column = 0; column < int(std::size(names)); ++column)
        roles.insert(Qt::UserRole + column, names[column]);
    return roles;
}

} // namespace velmora
