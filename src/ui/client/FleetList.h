// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QString>

namespace velmora {

/// The rows of a list of machines. What is new is told row by row, so that a view neither jumps nor loses the
/// keyboard's place when all of them come anew.
class FleetList : public QAbstractListModel {
    Q_OBJECT
public:
    struct Row {
        QString identifier, name, status, battery;
        QString symbol, tint; ///< a symbol, and a name of Theme.color

        friend bool operator==(const Row&, const Row&) = default;
    };

    using QAbstractListModel::QAbstractListModel;

    void assign(const QList<Row>& rows);

    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : int(rows_.size());
    }
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    void removeAllBut(const QList<Row>& rows);
    void place(int index, const Row& row);

    QList<Row> rows_;
};

} // namespace velmora
