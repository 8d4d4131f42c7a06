// `qorctl svp`: the service-processor form, as the plug-in's hexadecimal digits or decoded.
#ifndef QORCTL_COMMANDS_SVPCOMMAND_H
#define QORCTL_COMMANDS_SVPCOMMAND_H

#include <string>

namespace qorctl {

// Asks the plug-in for the form and writes its digits, byte for byte, and a line feed to standard
// output. Exit status as RunRaidCommand().
int RunSvpCommand(const std::string& pluginPath);

// Asks the plug-in for the form and writes it decoded. A form that is malformed gives exit status
// 1 and no output but the reason.
int RunSvpDecodeCommand(const std::string& pluginPath);

// The same for the digits in the file `path`, or on standard input where it is "-". No plug-in is
// loaded.
int DecodeSvpFile(const std::string& path);

}  // namespace qorctl

#endif  // QORCTL_COMMANDS_SVPCOMMAND_H
