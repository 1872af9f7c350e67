# Empties the folder COLLECTION but for the documents in the folder EXPECTED.
file(REMOVE_RECURSE ${COLLECTION})
file(COPY ${EXPECTED} DESTINATION ${COLLECTION})
