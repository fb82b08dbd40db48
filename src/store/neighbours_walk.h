// The walks over neighbours, for those who know what an item is.
#pragma once

#include "store/crowd.h"
#include "store/neighbours.h"

template <class Predicate>
bool Neighbours::AnyOf(Predicate i_predicate) const {
    if (m_bits == 0)
        return false;
    if (Kind() == c_single)
        return i_predicate(Single());
    if (Kind() == c_crowd)
        return AsCrowd()->AnyOf(i_predicate);
    Array* lp_array = AsArray();
    for (std::uint32_t l_index = 0; l_index < lp_array->m_size; ++l_index) {
        if (i_predicate(lp_array->Items()[l_index]))
            return true;
    }
    return false;
}

template <class Visitor>
void Neighbours::ForEach(Visitor i_visit) const {
    AnyOf([&i_visit](Item* ip_item) {
        i_visit(ip_item);
        return false;
    });
}
