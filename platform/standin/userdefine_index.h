/// @file The index of the user-defined file behind ReadUserDefineFromFile().
#pragma once

namespace standin {

/// Has the next look-up read the user-defined file again: a request begins, or has saved the file.
void ForgetUserDefineIndex();

} // namespace standin
