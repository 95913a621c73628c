#pragma once
// The subcommands of vardeni-publish. Each takes the arguments after its
// name and returns the process exit status (0 success, 1 failure, 2 usage).

#include <string>
#include <vector>

namespace publisher {

using Arguments = std::vector<std::wstring>;

int RunKeygen(const Arguments& arguments);
int RunPublicKey(const Arguments& arguments);
int RunPublish(const Arguments& arguments);
int RunSign(const Arguments& arguments);
int RunVerify(const Arguments& arguments);
int RunCheckUi(const Arguments& arguments);

// The whole program: the first argument names the command.
int RunPublisher(const Arguments& arguments);

}  // namespace publisher
