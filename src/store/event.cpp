#include "store/event.h"

EventHandlerRoot::~EventHandlerRoot() {
    if (mp_owner != nullptr)
        mp_owner->m_eventHandlers.erase(this);
}

DataHandler::~DataHandler() {
    RemoveDataHandlers();
    for (EventHandlerRoot* lp_handler : m_eventHandlers)
        lp_handler->mp_owner = nullptr;
}

void DataHandler::RemoveDataHandlers() {
    for (EventHandlerRoot* lp_handler : m_eventHandlers)
        lp_handler->m_removed = true;
}

void DataHandler::Own(EventHandlerRoot* ip_handler) {
    ip_handler->mp_owner = this;
    m_eventHandlers.insert(ip_handler);
}
