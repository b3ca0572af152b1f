// How @hey-api/openapi-ts makes its client; node's modules require the extension.
export default {
  input: "openapi-operations.yaml",
  output: { path: "generated/hey-api", importFileExtension: ".js" },
};
