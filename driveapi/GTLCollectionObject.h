// A list resource: its items, by position, by identifier, and one after the other.
#pragma once

#include "driveapi/GTLObject.h"

#include <QHash>

#include <optional>

namespace quenby {

class GTLCollectionObject : public GTLObject {
    GTL_OBJECT(GTLCollectionObject);

public:
    // The array under "items" with the element class that the list's class declares; null when there is none. List
    // classes have the same array under its own type as items().
    virtual GTLArrayBasePtr itemsArray() const;
    void setItemsArray(const GTLArrayBasePtr& items);

    qsizetype count() const;
    // Null past the end and for an item that is no dictionary.
    GTLObjectPtr itemAtIndex(qsizetype index) const;
    GTLObjectPtr operator[](qsizetype index) const { return itemAtIndex(index); }

    // For range loops: over the items that are objects, whatever their class.
    using Iterator = GTLIterator<GTLCollectionObject, GTLObjectPtr>;
    GTLObjectPtr at(qsizetype index) const { return itemAtIndex(index); }
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, count()}; }

    // Null when no item has the identifier. The items' identifiers are gathered on first use; call
    // resetIdentifierMap() after the items have changed.
    GTLObjectPtr itemForIdentifier(const QString& identifier) const;
    void resetIdentifierMap() { identifierMap_.reset(); }

private:
    mutable std::optional<QHash<QString, GTLObjectPtr>> identifierMap_;
};

// The base of list classes, whose range loops yield items of the declared class and pass over others. Base is a
// GTLCollectionObject with what the list has besides its items.
template <typename Item, typename Base = GTLCollectionObject>
class GTLCollectionOf : public Base {
public:
    using Iterator = GTLIterator<GTLCollectionOf, std::shared_ptr<Item>>;
    std::shared_ptr<Item> at(qsizetype index) const {
        return std::dynamic_pointer_cast<Item>(this->itemAtIndex(index));
    }
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, this->count()}; }
};

// A reply whose JSON is a bare array, kept under the key "result_array_items".
class GTLResultArray : public GTLCollectionObject {
    GTL_OBJECT(GTLResultArray);

public:
    GTLArrayBasePtr itemsArray() const override;
    // The same array as long as the class is the same.
    GTLArrayBasePtr itemsWithItemClass(const GTLClass& itemClass) const;

protected:
    void adoptJSON(const JSONValue& json) override;
};

} // namespace quenby
