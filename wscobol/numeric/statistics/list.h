// Lists of arguments, and results, at any address.
#ifndef ZOR_NUMERIC_STATISTICS_LIST_H
#define ZOR_NUMERIC_STATISTICS_LIST_H

#include <cstdint>
#include <cstring>

namespace zor::numeric {

// An element of a list: without the alignment of its form.
template <class T> struct __attribute__((packed)) Element { T value; };

template <class T> class List {
public:
    List(const T *array, uint32_t count)
        : first_(reinterpret_cast<const Element<T> *>(array)), count_(count) {}

    const Element<T> *begin() const { return first_; }
    const Element<T> *end() const { return first_ + count_; }

private:
    const Element<T> *first_;
    uint32_t count_;
};

template <class T> T *store(T *result, T value) {
    memcpy(result, &value, sizeof value);
    return result;
}

} // namespace zor::numeric

#endif
