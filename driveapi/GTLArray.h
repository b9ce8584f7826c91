// An array property: the typed view of a JSON array, which it shares. Objects are built when they are first asked for,
// and the same ones are given from then on. Threads: see JSONValue.h.
#pragma once

#include "driveapi/GTLClass.h"
#include "driveapi/GTLScalar.h"
#include "driveapi/JSONArray.h"

#include <initializer_list>
#include <iterator>
#include <type_traits>
#include <vector>

namespace quenby {

class GTLArrayBase {
public:
    // elementClass is what dictionaries become unless their "kind" says otherwise; null means GTLObject.
    GTLArrayBase(JSONArrayPtr json, const GTLClass* elementClass, GTLSurrogates surrogates);
    virtual ~GTLArrayBase();
    GTLArrayBase(const GTLArrayBase&) = delete;
    GTLArrayBase& operator=(const GTLArrayBase&) = delete;

    const JSONArrayPtr& JSON() const { return json_; }
    const GTLClass* elementClass() const { return elementClass_; }
    qsizetype count() const { return json_->count(); }
    bool isEmpty() const { return count() == 0; }

    JSONValue valueAtIndex(qsizetype index) const { return json_->at(index); }
    // Null past the end and for an element that is no dictionary.
    GTLObjectPtr objectAtIndex(qsizetype index) const;
    // Null past the end and for an element that is no array.
    GTLArrayBasePtr arrayAtIndex(qsizetype index) const;

    void appendObject(const GTLObjectPtr& object); // shares the object's JSON; null is not appended

private:
    struct Built {
        GTLObjectPtr object;
        GTLArrayBasePtr array;
    };
    Built& builtAt(qsizetype index) const;

    JSONArrayPtr json_;
    const GTLClass* elementClass_;
    GTLSurrogates surrogates_;
    mutable std::vector<Built> built_;
};

// Goes in order over a sequence with count() and at(index), and passes over null objects, so that what it yields is
// never null. The sequence must outlive it.
template <typename Sequence, typename Element>
class GTLIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Element;
    using difference_type = std::ptrdiff_t;
    using pointer = const Element*;
    using reference = const Element&;

    GTLIterator(const Sequence& sequence, qsizetype index)
        : sequence_(&sequence)
        , index_(index) {
        settle();
    }
    reference operator*() const { return element_; }
    GTLIterator& operator++() {
        ++index_;
        settle();
        return *this;
    }
    friend bool operator==(const GTLIterator& left, const GTLIterator& right) { return left.index_ == right.index_; }

private:
    void settle() {
        for (; index_ < sequence_->count(); ++index_) {
            element_ = sequence_->at(index_);
            if constexpr (GTLScalar<Element>)
                return;
            else if (element_)
                return;
        }
    }

    const Sequence* sequence_;
    qsizetype index_;
    Element element_{};
};

template <typename T>
class GTLArray : public GTLArrayBase {
public:
    // Plain values are given as they are, objects by reference.
    using Element = std::conditional_t<GTLScalar<T>, T, std::shared_ptr<T>>;

    explicit GTLArray(JSONArrayPtr json, GTLSurrogates surrogates = {})
        : GTLArrayBase(std::move(json), declaredElementClass(), std::move(surrogates)) {}

    static std::shared_ptr<GTLArray> make(const std::vector<Element>& elements = {}) {
        auto array = std::make_shared<GTLArray>(JSONArray::make());
        for (const Element& element : elements)
            array->append(element);
        return array;
    }

    // Past the end, and for an element of another type: null, or an empty or zero value.
    Element at(qsizetype index) const {
        if constexpr (GTLScalar<T>)
            return gtlScalarFromJSON<T>(valueAtIndex(index));
        else
            return std::dynamic_pointer_cast<T>(objectAtIndex(index));
    }
    Element operator[](qsizetype index) const { return at(index); }

    void append(const Element& element) {
        if constexpr (GTLScalar<T>)
            JSON()->append(JSONValue(element));
        else
            appendObject(element);
    }

    static GTLArrayBasePtr makeUntyped(JSONArrayPtr json, GTLSurrogates surrogates) {
        return std::make_shared<GTLArray>(std::move(json), std::move(surrogates));
    }

    using Iterator = GTLIterator<GTLArray, Element>;
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, count()}; }

    // Null for plain values.
    static const GTLClass* declaredElementClass() {
        if constexpr (GTLScalar<T>)
            return nullptr;
        else
            return &T::classDescriptor();
    }
};

template <typename T>
inline constexpr bool gtlIsArray = false;
template <typename T>
inline constexpr bool gtlIsArray<GTLArray<T>> = true;

} // namespace quenby
