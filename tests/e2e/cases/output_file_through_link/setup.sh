mkdir out && echo earlier > out/obligations.cvc && ln -s out/obligations.cvc link.cvc
