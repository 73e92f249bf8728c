#include "MessageHandler.h"

MessageHandler* MessageHandler::instance()
{
    // Created on first use and never destroyed: messages may still be emitted
    // while static objects are torn down at exit. A function-local static is
    // initialised once even if two threads race to it.
    static MessageHandler* handler = new MessageHandler;
    return handler;
}
