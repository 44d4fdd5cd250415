// Message boxes: a question or a notice, and the answer.
