#pragma once

// Severity carried as the int of MessageHandler::onMessage. Other values are
// allowed and shown in the log's current colour.
enum MessageSeverity : int
{
    Info = 0,
    Warning = 1,
    Error = 2,
    Success = 3
};
