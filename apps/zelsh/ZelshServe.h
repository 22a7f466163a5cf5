#pragma once

namespace Zelsh
{
/// Serves one connected client until it goes or quits, and closes the connection.
void ServeClient(int client);
}  // namespace Zelsh
