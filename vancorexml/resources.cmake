# What is embedded: the schemas and the compiled translations. Sets resource_sources.
set(resource_sources)
