@0xd1c3a4f0b7e29a15;

interface Scanner {
  getIsScanning @0 (head :Int32) -> (scanning :Bool);
}
