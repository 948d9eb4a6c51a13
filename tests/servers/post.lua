-- The request that wrk sends: the body that the variable BODY has, as JSON.
wrk.method = "POST"
wrk.body = os.getenv("BODY")
wrk.headers["Content-Type"] = "application/json"
