#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tests/program/sign_program.h"
#include "tests/support/project_key.h"
#include "tests/support/temporary_folder.h"

/// A request to which one answer is right, or any that holds a signature of its data.
struct WholeRequest {
    std::string name;
    InputKind kind = InputKind::form;
    std::string_view program = serverProgram;
    std::string body;
    std::string status = "200 OK";
    std::string contentType = "text/plain";
    std::string answer{};  ///< the response's body; with a signature, what stands before that
    std::string data{};    ///< what is signed; empty when the answer holds no signature
    std::string ending{};  ///< what stands behind the signature
    /// Whole responses that are right when a part of the work fails, and their exit statuses.
    std::map<std::string, int> refusals{};

    /// Whether the answer holds a signature.
    bool signs() const { return !data.empty(); }
    int exitStatus() const { return status == "200 OK" ? 0 : refusedStatus; }
    ProgramCall call() const { return requestCall(kind, body, program); }

    /// The response with this body.
    std::string response(std::string_view content) const;
};

/// Requests of each kind under a project of their own: signing and verifying data and files, with
/// the verdicts true and false, as form and as JSON, under both names of the program; refusals.
class WholeRequests {
public:
    WholeRequests();

    const std::vector<WholeRequest>& all() const { return requests_; }
    const WholeRequest& named(const std::string& name) const;

    const ProjectKey& key() const { return key_; }
    std::string project() const { return folder_.file("project"); }
    std::string file() const { return folder_.file("file"); }
    const TemporaryFolder& folder() const { return folder_; }

private:
    WholeRequest& add(std::string name, InputKind kind, std::string body,
                      std::string_view program = serverProgram);
    WholeRequest& addSigning(std::string name, InputKind kind, const SignRequest& request,
                             std::string_view program = serverProgram);
    WholeRequest& addVerifying(std::string name, InputKind kind, SignRequest request, bool verdict,
                               std::string_view program = serverProgram);
    void addRefused(std::string name, InputKind kind, std::string body, std::string_view message);
    void addAllSigning();
    void addAllVerifying();
    void addAllRefused();

    TemporaryFolder folder_;
    ProjectKey key_;
    std::vector<WholeRequest> requests_;
};
