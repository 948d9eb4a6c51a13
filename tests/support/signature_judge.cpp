#include "tests/support/signature_judge.h"

#include "tests/support/project_key.h"
#include "tests/support/signature_text.h"
#include "tests/support/temporary_folder.h"

bool judgeAcceptsText(const std::string& projectPath, std::string_view data,
                      const std::string& text) {
    const ProjectKey key = keyFromAttributes(readProjectBytes(fileBytes(projectPath)));
    return judgeAccepts(key, Bytes(data.begin(), data.end()), readSignatureText(text));
}
