// The download priorities of the groups over a restart. Their Type is not among the saved ones, so each number stands
// in a setting "group_priority/NAME" as well.
#pragma once

#include "store/data.h"
#include "store/data_saver.h"

class GroupPriorities : public DataHandler, public DataLoadedEventHandler {
public:
    // The Types of groups and settings must exist; the store file is loaded later.
    GroupPriorities();

    void DataLoaded() override;

private:
    void OnPrioritySet(ConnectionInfo& i_info);
    void OnPriorityGone(ConnectionInfo& i_info);
};
