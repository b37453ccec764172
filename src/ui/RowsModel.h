#pragma once

#include <QAbstractListModel>

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace halvo {

/// A list model that is given whole lists and notifies only the differences: rows inserted,
/// removed, moved or changed. So delegates survive a reordering. `Row` has an `id` and an equality.
/// Main thread only.
template <typename Row> class RowsModel : public QAbstractListModel {
  public:
    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(rows_.size());
    }

  protected:
    const std::vector<Row>& rows() const { return rows_; }
    const Row& row(const QModelIndex& index) const {
        return rows_[static_cast<std::size_t>(index.row())];
    }

    void setRows(const std::vector<Row>& wanted) {
        removeMissing(wanted);
        for (std::size_t place = 0; place < wanted.size(); ++place)
            settle(place, wanted[place]);
        removeBehind(wanted.size());
    }

  private:
    using Place = std::ptrdiff_t;

    void removeMissing(const std::vector<Row>& wanted) {
        for (std::size_t place = rows_.size(); place-- > 0;) {
            if (find(wanted, rows_[place], 0) == wanted.size()) removeAt(place);
        }
    }

    /// Moves the row to its place; the rows before it are final.
    void settle(std::size_t place, const Row& wanted) {
        const auto found = find(rows_, wanted, place);
        const int target = static_cast<int>(place);
        if (found == rows_.size()) {
            beginInsertRows({}, target, target);
            rows_.insert(rows_.begin() + static_cast<Place>(place), wanted);
            endInsertRows();
            return;
        }
        if (found != place) {
            const int source = static_cast<int>(found);
            beginMoveRows({}, source, source, {}, target);
            std::rotate(rows_.begin() + static_cast<Place>(place),
                        rows_.begin() + static_cast<Place>(found),
                        rows_.begin() + static_cast<Place>(found) + 1);
            endMoveRows();
        }
        if (rows_[place] == wanted) return;
        rows_[place] = wanted;
        const auto changed = index(target);
        Q_EMIT dataChanged(changed, changed);
    }

    void removeBehind(std::size_t count) {
        while (rows_.size() > count)
            removeAt(rows_.size() - 1);
    }

    void removeAt(std::size_t place) {
        const int target = static_cast<int>(place);
        beginRemoveRows({}, target, target);
        rows_.erase(rows_.begin() + static_cast<Place>(place));
        endRemoveRows();
    }

    static std::size_t find(const std::vector<Row>& list, const Row& wanted, std::size_t from) {
        while (from < list.size() && !(list[from].id == wanted.id))
            ++from;
        return from;
    }

    std::vector<Row> rows_;
};

} // namespace halvo
