// A reference-counted pointer whose count is a plain int: an object and all handles on it stay on one thread.
#pragma once

#include <utility>

#include "store/contract.h"

template <class T>
class rcptr { // NOLINT(readability-identifier-naming): its name is older than the rule
public:
    rcptr() = default;
    // Takes ownership.
    explicit rcptr(T* ip_object) : mp_object(ip_object), mp_count(ip_object ? new int(1) : nullptr) {}
    rcptr(const rcptr& i_other) : mp_object(i_other.mp_object), mp_count(i_other.mp_count) {
        if (mp_count)
            ++*mp_count;
    }
    ~rcptr() { Release(); }

    rcptr& operator=(const rcptr& i_other) {
        // The copy holds the object while ours is released, which makes assignment to oneself a no-op.
        rcptr l_copy(i_other);
        std::swap(mp_object, l_copy.mp_object);
        std::swap(mp_count, l_copy.mp_count);
        return *this;
    }

    T* operator->() const {
        TIDEWELL_CONTRACT(mp_object != 0);
        return mp_object;
    }
    T& operator*() const {
        TIDEWELL_CONTRACT(mp_object != 0);
        return *mp_object;
    }
    explicit operator bool() const { return mp_object; }

private:
    void Release() {
        if (!mp_count || --*mp_count > 0)
            return;
        delete mp_object;
        delete mp_count;
    }

    T* mp_object = nullptr;
    int* mp_count = nullptr;
};
