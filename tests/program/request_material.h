#pragma once

#include <string>
#include <vector>

#include "tests/support/project_builder.h"
#include "tests/support/temporary_folder.h"

/// Projects, files and signatures that random requests are made of, most of them damaged.
class RequestMaterial {
public:
    RequestMaterial();

    const std::string& project() const;
    const std::string& file() const;
    static std::string data();
    std::string signature() const;

private:
    void addProject(const Bytes& bytes);
    void addProjects();
    void addFiles();

    TemporaryFolder folder_;
    std::string soundProject_;
    std::vector<std::string> projects_;
    std::vector<std::string> files_;
    std::vector<std::string> signatures_;
};
